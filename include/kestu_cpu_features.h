/*
 * The features of processors by name: which the processor has, which the operating system lets
 * programs use, and which this process may use.
 *
 *     if (kestu_cpu_feature_usable(KESTU_CPU_FEATURE_AVX2))
 *         sum = sum_256;
 *
 * A feature is a bit of what cpuid answers. Its number tells the word that holds it (number / 32)
 * and the bit (number % 32); numbers never change. The library chooses its own instructions by the
 * same rules. Nothing fails, nothing is kept, and everything may run at the same time.
 */
#ifndef KESTU_CPU_FEATURES_H
#define KESTU_CPU_FEATURES_H

#include "kestu_defs.h"

#include <stdint.h>

KESTU_BEGIN_DECLS

/* No feature, and the size of what there is. */
enum {
    KESTU_CPU_FEATURE_NONE = -1,  /* no feature */
    KESTU_CPU_FEATURE_WORDS = 20, /* the words that hold features now */
};

/* How far a feature has come. Each state includes those before it. */
enum {
    KESTU_CPU_ABSENT = 0,  /* the processor does not have it */
    KESTU_CPU_PRESENT = 1, /* the processor has it */
    KESTU_CPU_ENABLED = 2, /* and the operating system saves the registers that it works on */
    KESTU_CPU_USABLE = 3,  /* and this process may use them: matrices have to be asked for */
};

/* What features are for. */
enum {
    KESTU_CPU_INSTRUCTIONS = 0,     /* instructions on general registers */
    KESTU_CPU_VECTORS = 1,          /* vectors and floating-point numbers */
    KESTU_CPU_MATRICES = 2,         /* matrices */
    KESTU_CPU_CRYPTOGRAPHY = 3,     /* ciphers, digests, random numbers */
    KESTU_CPU_MEMORY = 4,           /* memory, caches, addresses */
    KESTU_CPU_VIRTUAL_MACHINES = 5, /* virtual machines */
    KESTU_CPU_SECURITY = 6,         /* protection against attackers */
    KESTU_CPU_DIAGNOSTICS = 7,      /* debugging, measuring, faults of the machine */
    KESTU_CPU_POWER = 8,            /* power, frequency, temperature */
    KESTU_CPU_SYSTEM = 9,           /* what operating systems need */
};

/*
 * All features. Sources: Intel 64 and IA-32 Architectures Software Developer's Manual, volume 2A,
 * CPUID; AMD64 Architecture Programmer's Manual, volume 3, appendix E. The names are Linux's.
 */
enum {
    /* leaf 0x1, EDX */
    KESTU_CPU_FEATURE_FPU = 32 * 0 + 0,      /* x87 floating point */
    KESTU_CPU_FEATURE_VME = 32 * 0 + 1,      /* extensions of virtual 8086 mode */
    KESTU_CPU_FEATURE_DE = 32 * 0 + 2,       /* breakpoints on input and output */
    KESTU_CPU_FEATURE_PSE = 32 * 0 + 3,      /* pages of 4 MiB */
    KESTU_CPU_FEATURE_TSC = 32 * 0 + 4,      /* RDTSC */
    KESTU_CPU_FEATURE_MSR = 32 * 0 + 5,      /* RDMSR and WRMSR */
    KESTU_CPU_FEATURE_PAE = 32 * 0 + 6,      /* physical addresses of more than 32 bits */
    KESTU_CPU_FEATURE_MCE = 32 * 0 + 7,      /* the machine check exception */
    KESTU_CPU_FEATURE_CX8 = 32 * 0 + 8,      /* CMPXCHG8B */
    KESTU_CPU_FEATURE_APIC = 32 * 0 + 9,     /* a local interrupt controller */
    KESTU_CPU_FEATURE_SEP = 32 * 0 + 11,     /* SYSENTER and SYSEXIT */
    KESTU_CPU_FEATURE_MTRR = 32 * 0 + 12,    /* memory type range registers */
    KESTU_CPU_FEATURE_PGE = 32 * 0 + 13,     /* global pages */
    KESTU_CPU_FEATURE_MCA = 32 * 0 + 14,     /* the machine check architecture */
    KESTU_CPU_FEATURE_CMOV = 32 * 0 + 15,    /* CMOVcc */
    KESTU_CPU_FEATURE_PAT = 32 * 0 + 16,     /* the page attribute table */
    KESTU_CPU_FEATURE_PSE36 = 32 * 0 + 17,   /* large pages above 4 GiB */
    KESTU_CPU_FEATURE_PN = 32 * 0 + 18,      /* a serial number */
    KESTU_CPU_FEATURE_CLFLUSH = 32 * 0 + 19, /* CLFLUSH */
    KESTU_CPU_FEATURE_DTS = 32 * 0 + 21,     /* debug store */
    KESTU_CPU_FEATURE_ACPI = 32 * 0 + 22,    /* thermal monitor and clock control */
    KESTU_CPU_FEATURE_MMX = 32 * 0 + 23,     /* MMX */
    KESTU_CPU_FEATURE_FXSR = 32 * 0 + 24,    /* FXSAVE and FXRSTOR */
    KESTU_CPU_FEATURE_SSE = 32 * 0 + 25,     /* SSE */
    KESTU_CPU_FEATURE_SSE2 = 32 * 0 + 26,    /* SSE2 */
    KESTU_CPU_FEATURE_SS = 32 * 0 + 27,      /* self snoop */
    KESTU_CPU_FEATURE_HT = 32 * 0 + 28,      /* a package may hold several logical processors */
    KESTU_CPU_FEATURE_TM = 32 * 0 + 29,      /* the thermal monitor */
    KESTU_CPU_FEATURE_IA64 = 32 * 0 + 30,    /* an IA-64 processor that emulates x86 */
    KESTU_CPU_FEATURE_PBE = 32 * 0 + 31,     /* pending break enable */
    /* leaf 0x80000001, EDX */
    KESTU_CPU_FEATURE_SYSCALL = 32 * 1 + 11,  /* SYSCALL and SYSRET */
    KESTU_CPU_FEATURE_MP = 32 * 1 + 19,       /* multiprocessing capable */
    KESTU_CPU_FEATURE_NX = 32 * 1 + 20,       /* no-execute pages */
    KESTU_CPU_FEATURE_MMXEXT = 32 * 1 + 22,   /* AMD's extensions of MMX */
    KESTU_CPU_FEATURE_FXSR_OPT = 32 * 1 + 25, /* faster FXSAVE and FXRSTOR */
    KESTU_CPU_FEATURE_PDPE1GB = 32 * 1 + 26,  /* pages of 1 GiB */
    KESTU_CPU_FEATURE_RDTSCP = 32 * 1 + 27,   /* RDTSCP */
    KESTU_CPU_FEATURE_LM = 32 * 1 + 29,       /* long mode: 64 bits */
    KESTU_CPU_FEATURE_3DNOWEXT = 32 * 1 + 30, /* extensions of 3DNow! */
    KESTU_CPU_FEATURE_3DNOW = 32 * 1 + 31,    /* 3DNow! */
    /* leaf 0x1, ECX */
    KESTU_CPU_FEATURE_SSE3 = 32 * 2 + 0,                /* SSE3 */
    KESTU_CPU_FEATURE_PCLMULQDQ = 32 * 2 + 1,           /* carry-less multiplication */
    KESTU_CPU_FEATURE_DTES64 = 32 * 2 + 2,              /* debug store of 64 bits */
    KESTU_CPU_FEATURE_MONITOR = 32 * 2 + 3,             /* MONITOR and MWAIT */
    KESTU_CPU_FEATURE_DS_CPL = 32 * 2 + 4,              /* debug store by privilege level */
    KESTU_CPU_FEATURE_VMX = 32 * 2 + 5,                 /* Intel's virtual machines */
    KESTU_CPU_FEATURE_SMX = 32 * 2 + 6,                 /* safer mode: GETSEC */
    KESTU_CPU_FEATURE_EST = 32 * 2 + 7,                 /* enhanced SpeedStep */
    KESTU_CPU_FEATURE_TM2 = 32 * 2 + 8,                 /* the second thermal monitor */
    KESTU_CPU_FEATURE_SSSE3 = 32 * 2 + 9,               /* SSSE3 */
    KESTU_CPU_FEATURE_CID = 32 * 2 + 10,                /* the context identifier of the L1 cache */
    KESTU_CPU_FEATURE_SDBG = 32 * 2 + 11,               /* silicon debug */
    KESTU_CPU_FEATURE_FMA = 32 * 2 + 12,                /* fused multiplication and addition */
    KESTU_CPU_FEATURE_CX16 = 32 * 2 + 13,               /* CMPXCHG16B */
    KESTU_CPU_FEATURE_XTPR = 32 * 2 + 14,               /* control of task priority messages */
    KESTU_CPU_FEATURE_PDCM = 32 * 2 + 15,               /* a register of performance capabilities */
    KESTU_CPU_FEATURE_PCID = 32 * 2 + 17,               /* process-context identifiers */
    KESTU_CPU_FEATURE_DCA = 32 * 2 + 18,                /* direct cache access */
    KESTU_CPU_FEATURE_SSE4_1 = 32 * 2 + 19,             /* SSE4.1 */
    KESTU_CPU_FEATURE_SSE4_2 = 32 * 2 + 20,             /* SSE4.2 */
    KESTU_CPU_FEATURE_X2APIC = 32 * 2 + 21,             /* the x2APIC */
    KESTU_CPU_FEATURE_MOVBE = 32 * 2 + 22,              /* MOVBE */
    KESTU_CPU_FEATURE_POPCNT = 32 * 2 + 23,             /* POPCNT */
    KESTU_CPU_FEATURE_TSC_DEADLINE_TIMER = 32 * 2 + 24, /* a timer by the time-stamp counter */
    KESTU_CPU_FEATURE_AES = 32 * 2 + 25,                /* AES rounds */
    KESTU_CPU_FEATURE_XSAVE = 32 * 2 + 26,              /* XSAVE, XRSTOR, XSETBV and XGETBV */
    KESTU_CPU_FEATURE_OSXSAVE = 32 * 2 + 27,            /* the operating system has enabled XSAVE */
    KESTU_CPU_FEATURE_AVX = 32 * 2 + 28,                /* AVX */
    KESTU_CPU_FEATURE_F16C = 32 * 2 + 29,               /* conversions of half-precision floats */
    KESTU_CPU_FEATURE_RDRAND = 32 * 2 + 30,             /* RDRAND */
    KESTU_CPU_FEATURE_HYPERVISOR = 32 * 2 + 31,         /* runs in a virtual machine */
    /* leaf 0x80000001, ECX */
    KESTU_CPU_FEATURE_LAHF_LM = 32 * 3 + 0,       /* LAHF and SAHF in long mode */
    KESTU_CPU_FEATURE_CMP_LEGACY = 32 * 3 + 1,    /* cores counted the old way */
    KESTU_CPU_FEATURE_SVM = 32 * 3 + 2,           /* AMD's virtual machines */
    KESTU_CPU_FEATURE_EXTAPIC = 32 * 3 + 3,       /* extended space of the APIC */
    KESTU_CPU_FEATURE_CR8_LEGACY = 32 * 3 + 4,    /* CR8 outside of long mode */
    KESTU_CPU_FEATURE_ABM = 32 * 3 + 5,           /* LZCNT */
    KESTU_CPU_FEATURE_SSE4A = 32 * 3 + 6,         /* SSE4a */
    KESTU_CPU_FEATURE_MISALIGNSSE = 32 * 3 + 7,   /* SSE with operands that are not aligned */
    KESTU_CPU_FEATURE_3DNOWPREFETCH = 32 * 3 + 8, /* PREFETCH and PREFETCHW */
    KESTU_CPU_FEATURE_OSVW = 32 * 3 + 9,          /* the operating system's visible workarounds */
    KESTU_CPU_FEATURE_IBS = 32 * 3 + 10,          /* sampling by instructions */
    KESTU_CPU_FEATURE_XOP = 32 * 3 + 11,          /* XOP */
    KESTU_CPU_FEATURE_SKINIT = 32 * 3 + 12,       /* SKINIT and STGI */
    KESTU_CPU_FEATURE_WDT = 32 * 3 + 13,          /* a watchdog timer */
    KESTU_CPU_FEATURE_LWP = 32 * 3 + 15,          /* lightweight profiling */
    KESTU_CPU_FEATURE_FMA4 = 32 * 3 + 16,         /* fused multiplication with four operands */
    KESTU_CPU_FEATURE_TCE = 32 * 3 + 17,          /* the translation cache extension */
    KESTU_CPU_FEATURE_NODEID_MSR = 32 * 3 + 19,   /* a register with the node's number */
    KESTU_CPU_FEATURE_TBM = 32 * 3 + 21,          /* operations on trailing bits */
    KESTU_CPU_FEATURE_TOPOEXT = 32 * 3 + 22,      /* leaves of the topology */
    KESTU_CPU_FEATURE_PERFCTR_CORE = 32 * 3 + 23, /* more counters of a core */
    KESTU_CPU_FEATURE_PERFCTR_NB = 32 * 3 + 24,   /* counters of the northbridge */
    KESTU_CPU_FEATURE_BPEXT = 32 * 3 + 26,        /* data breakpoints by masks */
    KESTU_CPU_FEATURE_PTSC = 32 * 3 + 27,         /* a performance time-stamp counter */
    KESTU_CPU_FEATURE_PERFCTR_LLC = 32 * 3 + 28,  /* counters of the last-level cache */
    KESTU_CPU_FEATURE_MWAITX = 32 * 3 + 29,       /* MONITORX and MWAITX */
    /* leaf 0x7, EBX */
    KESTU_CPU_FEATURE_FSGSBASE = 32 * 4 + 0,    /* access to the bases of FS and GS */
    KESTU_CPU_FEATURE_TSC_ADJUST = 32 * 4 + 1,  /* an offset of the time-stamp counter */
    KESTU_CPU_FEATURE_SGX = 32 * 4 + 2,         /* enclaves */
    KESTU_CPU_FEATURE_BMI1 = 32 * 4 + 3,        /* bit manipulation, first group */
    KESTU_CPU_FEATURE_HLE = 32 * 4 + 4,         /* elision of hardware locks */
    KESTU_CPU_FEATURE_AVX2 = 32 * 4 + 5,        /* AVX2 */
    KESTU_CPU_FEATURE_SMEP = 32 * 4 + 7,        /* no execution of user pages by the kernel */
    KESTU_CPU_FEATURE_BMI2 = 32 * 4 + 8,        /* bit manipulation, second group */
    KESTU_CPU_FEATURE_ERMS = 32 * 4 + 9,        /* fast REP MOVSB and STOSB */
    KESTU_CPU_FEATURE_INVPCID = 32 * 4 + 10,    /* INVPCID */
    KESTU_CPU_FEATURE_RTM = 32 * 4 + 11,        /* restricted transactional memory */
    KESTU_CPU_FEATURE_CQM = 32 * 4 + 12,        /* monitoring of shared resources */
    KESTU_CPU_FEATURE_MPX = 32 * 4 + 14,        /* memory protection extensions */
    KESTU_CPU_FEATURE_RDT_A = 32 * 4 + 15,      /* allocation of shared resources */
    KESTU_CPU_FEATURE_AVX512F = 32 * 4 + 16,    /* AVX-512, the foundation */
    KESTU_CPU_FEATURE_AVX512DQ = 32 * 4 + 17,   /* AVX-512 on 32 and 64 bits */
    KESTU_CPU_FEATURE_RDSEED = 32 * 4 + 18,     /* RDSEED */
    KESTU_CPU_FEATURE_ADX = 32 * 4 + 19,        /* ADCX and ADOX */
    KESTU_CPU_FEATURE_SMAP = 32 * 4 + 20,       /* no access to user pages by the kernel */
    KESTU_CPU_FEATURE_AVX512IFMA = 32 * 4 + 21, /* AVX-512, integers of 52 bits */
    KESTU_CPU_FEATURE_CLFLUSHOPT = 32 * 4 + 23, /* CLFLUSHOPT */
    KESTU_CPU_FEATURE_CLWB = 32 * 4 + 24,       /* CLWB */
    KESTU_CPU_FEATURE_INTEL_PT = 32 * 4 + 25,   /* traces of the processor */
    KESTU_CPU_FEATURE_AVX512PF = 32 * 4 + 26,   /* AVX-512, prefetching */
    KESTU_CPU_FEATURE_AVX512ER = 32 * 4 + 27,   /* AVX-512, exponentials and reciprocals */
    KESTU_CPU_FEATURE_AVX512CD = 32 * 4 + 28,   /* AVX-512, detection of conflicts */
    KESTU_CPU_FEATURE_SHA_NI = 32 * 4 + 29,     /* SHA-1 and SHA-256 */
    KESTU_CPU_FEATURE_AVX512BW = 32 * 4 + 30,   /* AVX-512 on bytes and words */
    KESTU_CPU_FEATURE_AVX512VL = 32 * 4 + 31,   /* AVX-512 on 128 and 256 bits */
    /* leaf 0xD, subleaf 1, EAX */
    KESTU_CPU_FEATURE_XSAVEOPT = 32 * 5 + 0, /* XSAVEOPT */
    KESTU_CPU_FEATURE_XSAVEC = 32 * 5 + 1,   /* XSAVEC: the compacted form */
    KESTU_CPU_FEATURE_XGETBV1 = 32 * 5 + 2,  /* XGETBV of what is in use */
    KESTU_CPU_FEATURE_XSAVES = 32 * 5 + 3,   /* XSAVES and XRSTORS */
    KESTU_CPU_FEATURE_XFD = 32 * 5 + 4,      /* faults at the first use of extended state */
    /* leaf 0xF, EDX */
    KESTU_CPU_FEATURE_CQM_LLC = 32 * 6 + 1, /* monitoring of the last-level cache */
    /* leaf 0xF, subleaf 1, EDX */
    KESTU_CPU_FEATURE_CQM_OCCUP_LLC = 32 * 7 + 0, /* how much of the cache is occupied */
    KESTU_CPU_FEATURE_CQM_MBM_TOTAL = 32 * 7 + 1, /* total bandwidth of memory */
    KESTU_CPU_FEATURE_CQM_MBM_LOCAL = 32 * 7 + 2, /* local bandwidth of memory */
    /* leaf 0x10, EBX */
    KESTU_CPU_FEATURE_CAT_L3 = 32 * 8 + 1, /* parts of the L3 cache can be allotted */
    KESTU_CPU_FEATURE_CAT_L2 = 32 * 8 + 2, /* parts of the L2 cache can be allotted */
    KESTU_CPU_FEATURE_MBA = 32 * 8 + 3,    /* bandwidth of memory can be allotted */
    /* leaf 0x7, subleaf 1, EAX */
    KESTU_CPU_FEATURE_SHA512 = 32 * 9 + 0,      /* SHA-512 */
    KESTU_CPU_FEATURE_SM3 = 32 * 9 + 1,         /* SM3 digests */
    KESTU_CPU_FEATURE_SM4 = 32 * 9 + 2,         /* SM4 ciphers */
    KESTU_CPU_FEATURE_AVX_VNNI = 32 * 9 + 4,    /* dot products of integers, with AVX */
    KESTU_CPU_FEATURE_AVX512_BF16 = 32 * 9 + 5, /* AVX-512 on bfloat16 */
    KESTU_CPU_FEATURE_CMPCCXADD = 32 * 9 + 7,   /* CMPccXADD */
    KESTU_CPU_FEATURE_FZRM = 32 * 9 + 10,       /* fast REP MOVSB of no bytes */
    KESTU_CPU_FEATURE_FSRS = 32 * 9 + 11,       /* fast short REP STOSB */
    KESTU_CPU_FEATURE_FSRC = 32 * 9 + 12,       /* fast short REP CMPSB and SCASB */
    KESTU_CPU_FEATURE_FRED = 32 * 9 + 17,       /* flexible return and event delivery */
    KESTU_CPU_FEATURE_LKGS = 32 * 9 + 18,       /* LKGS */
    KESTU_CPU_FEATURE_WRMSRNS = 32 * 9 + 19,    /* WRMSR that does not serialize */
    KESTU_CPU_FEATURE_AMX_FP16 = 32 * 9 + 21,   /* matrices of half-precision floats */
    KESTU_CPU_FEATURE_AVX_IFMA = 32 * 9 + 23,   /* integers of 52 bits, with AVX */
    KESTU_CPU_FEATURE_LAM = 32 * 9 + 26,        /* linear address masking */
    /* leaf 0x80000008, EBX */
    KESTU_CPU_FEATURE_CLZERO = 32 * 10 + 0,     /* CLZERO */
    KESTU_CPU_FEATURE_IRPERF = 32 * 10 + 1,     /* a counter of retired instructions */
    KESTU_CPU_FEATURE_XSAVEERPTR = 32 * 10 + 2, /* error pointers are always saved */
    KESTU_CPU_FEATURE_RDPRU = 32 * 10 + 4,      /* RDPRU */
    KESTU_CPU_FEATURE_WBNOINVD = 32 * 10 + 9,   /* WBNOINVD */
    KESTU_CPU_FEATURE_AMD_IBPB = 32 * 10 + 12,  /* a barrier of indirect branch prediction */
    KESTU_CPU_FEATURE_AMD_IBRS = 32 * 10 + 14,  /* restricted indirect branch speculation */
    KESTU_CPU_FEATURE_AMD_STIBP = 32 * 10 + 15, /* branch predictors apart for threads */
    KESTU_CPU_FEATURE_AMD_PPIN = 32 * 10 + 23,  /* the processor's inventory number */
    KESTU_CPU_FEATURE_AMD_SSBD = 32 * 10 + 24,  /* bypass of stores can be disabled */
    KESTU_CPU_FEATURE_VIRT_SSBD =
        32 * 10 + 25, /* bypass of stores can be disabled in virtual machines */
    KESTU_CPU_FEATURE_CPPC = 32 * 10 + 27, /* control of collaborative performance */
    KESTU_CPU_FEATURE_BRS = 32 * 10 + 31,  /* sampling of branches */
    /* leaf 0x6, EAX */
    KESTU_CPU_FEATURE_DTHERM = 32 * 11 + 0,         /* a digital thermometer */
    KESTU_CPU_FEATURE_IDA = 32 * 11 + 1,            /* turbo frequencies */
    KESTU_CPU_FEATURE_ARAT = 32 * 11 + 2,           /* the APIC's timer always runs */
    KESTU_CPU_FEATURE_PLN = 32 * 11 + 4,            /* notice of power limits */
    KESTU_CPU_FEATURE_PTS = 32 * 11 + 6,            /* a thermometer of the package */
    KESTU_CPU_FEATURE_HWP = 32 * 11 + 7,            /* frequencies chosen by the hardware */
    KESTU_CPU_FEATURE_HWP_NOTIFY = 32 * 11 + 8,     /* notices of changed limits of frequencies */
    KESTU_CPU_FEATURE_HWP_ACT_WINDOW = 32 * 11 + 9, /* a window of activity for frequencies */
    KESTU_CPU_FEATURE_HWP_EPP = 32 * 11 + 10,       /* preference of energy or performance */
    KESTU_CPU_FEATURE_HWP_PKG_REQ = 32 * 11 + 11,   /* requests for a whole package */
    KESTU_CPU_FEATURE_HFI = 32 * 11 + 19,           /* feedback of the hardware */
    /* leaf 0x6, ECX */
    KESTU_CPU_FEATURE_APERFMPERF = 32 * 12 + 0, /* counters of the actual frequency */
    KESTU_CPU_FEATURE_EPB = 32 * 12 + 3,        /* bias of energy or performance */
    /* leaf 0x8000000A, EDX */
    KESTU_CPU_FEATURE_NPT = 32 * 13 + 0,           /* nested pages */
    KESTU_CPU_FEATURE_LBRV = 32 * 13 + 1,          /* virtual records of branches */
    KESTU_CPU_FEATURE_SVM_LOCK = 32 * 13 + 2,      /* virtual machines can be locked */
    KESTU_CPU_FEATURE_NRIP_SAVE = 32 * 13 + 3,     /* the next instruction is saved */
    KESTU_CPU_FEATURE_TSC_SCALE = 32 * 13 + 4,     /* the rate of the guest's time-stamp counter */
    KESTU_CPU_FEATURE_VMCB_CLEAN = 32 * 13 + 5,    /* clean bits of the control block */
    KESTU_CPU_FEATURE_FLUSHBYASID = 32 * 13 + 6,   /* flushes by address space */
    KESTU_CPU_FEATURE_DECODEASSISTS = 32 * 13 + 7, /* help with decoding */
    KESTU_CPU_FEATURE_PAUSEFILTER = 32 * 13 + 10,  /* a count of pauses */
    KESTU_CPU_FEATURE_PFTHRESHOLD = 32 * 13 + 12,  /* a threshold for the count of pauses */
    KESTU_CPU_FEATURE_AVIC = 32 * 13 + 13,         /* a virtual interrupt controller */
    KESTU_CPU_FEATURE_V_VMSAVE_VMLOAD = 32 * 13 + 15, /* VMSAVE and VMLOAD in guests */
    KESTU_CPU_FEATURE_VGIF = 32 * 13 + 16,            /* a virtual global interrupt flag */
    KESTU_CPU_FEATURE_X2AVIC = 32 * 13 + 18,          /* the virtual controller as x2APIC */
    KESTU_CPU_FEATURE_V_SPEC_CTRL = 32 * 13 + 20,     /* virtual control of speculation */
    KESTU_CPU_FEATURE_VNMI = 32 * 13 + 25,            /* virtual non-maskable interrupts */
    /* leaf 0x7, ECX */
    KESTU_CPU_FEATURE_PREFETCHWT1 = 32 * 14 + 0, /* PREFETCHWT1 */
    KESTU_CPU_FEATURE_AVX512VBMI = 32 * 14 + 1,  /* AVX-512, permutations of bytes */
    KESTU_CPU_FEATURE_UMIP = 32 * 14 + 2,        /* no reading of descriptor tables by users */
    KESTU_CPU_FEATURE_PKU = 32 * 14 + 3,         /* protection keys of user pages */
    KESTU_CPU_FEATURE_OSPKE = 32 * 14 + 4,   /* the operating system has enabled protection keys */
    KESTU_CPU_FEATURE_WAITPKG = 32 * 14 + 5, /* UMONITOR, UMWAIT and TPAUSE */
    KESTU_CPU_FEATURE_AVX512_VBMI2 = 32 * 14 + 6,   /* AVX-512, more on bytes and words */
    KESTU_CPU_FEATURE_SHSTK = 32 * 14 + 7,          /* shadow stacks */
    KESTU_CPU_FEATURE_GFNI = 32 * 14 + 8,           /* Galois fields */
    KESTU_CPU_FEATURE_VAES = 32 * 14 + 9,           /* AES rounds on wide vectors */
    KESTU_CPU_FEATURE_VPCLMULQDQ = 32 * 14 + 10,    /* carry-less multiplication on wide vectors */
    KESTU_CPU_FEATURE_AVX512_VNNI = 32 * 14 + 11,   /* AVX-512, dot products of integers */
    KESTU_CPU_FEATURE_AVX512_BITALG = 32 * 14 + 12, /* AVX-512, counts in bytes and words */
    KESTU_CPU_FEATURE_TME = 32 * 14 + 13,           /* encryption of all memory */
    KESTU_CPU_FEATURE_AVX512_VPOPCNTDQ = 32 * 14 + 14, /* AVX-512, counts in 32 and 64 bits */
    KESTU_CPU_FEATURE_LA57 = 32 * 14 + 16,             /* linear addresses of 57 bits */
    KESTU_CPU_FEATURE_RDPID = 32 * 14 + 22,            /* RDPID */
    KESTU_CPU_FEATURE_BUS_LOCK_DETECT = 32 * 14 + 24,  /* notice of locks of the bus */
    KESTU_CPU_FEATURE_CLDEMOTE = 32 * 14 + 25,         /* CLDEMOTE */
    KESTU_CPU_FEATURE_MOVDIRI = 32 * 14 + 27,          /* MOVDIRI */
    KESTU_CPU_FEATURE_MOVDIR64B = 32 * 14 + 28,        /* MOVDIR64B */
    KESTU_CPU_FEATURE_ENQCMD = 32 * 14 + 29,           /* ENQCMD and ENQCMDS */
    KESTU_CPU_FEATURE_SGX_LC = 32 * 14 + 30,           /* launch control of enclaves */
    /* leaf 0x80000007, EBX */
    KESTU_CPU_FEATURE_OVERFLOW_RECOV = 32 * 15 + 0, /* recovery from overflows of machine checks */
    KESTU_CPU_FEATURE_SUCCOR = 32 * 15 + 1, /* software containment and recovery of errors */
    KESTU_CPU_FEATURE_SMCA = 32 * 15 + 3,   /* scalable machine check architecture */
    /* leaf 0x80000007, EDX */
    KESTU_CPU_FEATURE_TS = 32 * 16 + 0,             /* a temperature sensor */
    KESTU_CPU_FEATURE_FID = 32 * 16 + 1,            /* control of the frequency */
    KESTU_CPU_FEATURE_VID = 32 * 16 + 2,            /* control of the voltage */
    KESTU_CPU_FEATURE_TTP = 32 * 16 + 3,            /* thermal trip */
    KESTU_CPU_FEATURE_HTC = 32 * 16 + 4,            /* hardware thermal control */
    KESTU_CPU_FEATURE_STC = 32 * 16 + 5,            /* software thermal control */
    KESTU_CPU_FEATURE_HW_PSTATE = 32 * 16 + 7,      /* power states by the hardware */
    KESTU_CPU_FEATURE_NONSTOP_TSC = 32 * 16 + 8,    /* a time-stamp counter of constant rate */
    KESTU_CPU_FEATURE_CPB = 32 * 16 + 9,            /* boost of the core's performance */
    KESTU_CPU_FEATURE_PROC_FEEDBACK = 32 * 16 + 11, /* feedback of the processor */
    KESTU_CPU_FEATURE_ACC_POWER = 32 * 16 + 12,     /* a counter of power */
    /* leaf 0x7, EDX */
    KESTU_CPU_FEATURE_AVX512_4VNNIW = 32 * 17 + 2,       /* AVX-512, four dot products of words */
    KESTU_CPU_FEATURE_AVX512_4FMAPS = 32 * 17 + 3,       /* AVX-512, four fused multiplications */
    KESTU_CPU_FEATURE_FSRM = 32 * 17 + 4,                /* fast short REP MOVSB */
    KESTU_CPU_FEATURE_UINTR = 32 * 17 + 5,               /* interrupts of user programs */
    KESTU_CPU_FEATURE_AVX512_VP2INTERSECT = 32 * 17 + 8, /* AVX-512, intersections */
    KESTU_CPU_FEATURE_MD_CLEAR = 32 * 17 + 10,           /* VERW clears buffers */
    KESTU_CPU_FEATURE_RTM_ALWAYS_ABORT = 32 * 17 + 11,   /* transactions always abort */
    KESTU_CPU_FEATURE_SERIALIZE = 32 * 17 + 14,          /* SERIALIZE */
    KESTU_CPU_FEATURE_HYBRID = 32 * 17 + 15,             /* cores of different kinds */
    KESTU_CPU_FEATURE_TSXLDTRK = 32 * 17 + 16,           /* loads that transactions do not track */
    KESTU_CPU_FEATURE_PCONFIG = 32 * 17 + 18,            /* PCONFIG */
    KESTU_CPU_FEATURE_ARCH_LBR = 32 * 17 + 19,           /* architectural records of branches */
    KESTU_CPU_FEATURE_IBT = 32 * 17 + 20,                /* tracking of indirect branches */
    KESTU_CPU_FEATURE_AMX_BF16 = 32 * 17 + 22,           /* matrices of bfloat16 */
    KESTU_CPU_FEATURE_AVX512_FP16 = 32 * 17 + 23,        /* AVX-512 on half-precision floats */
    KESTU_CPU_FEATURE_AMX_TILE = 32 * 17 + 24,           /* tiles: the registers of matrices */
    KESTU_CPU_FEATURE_AMX_INT8 = 32 * 17 + 25,           /* matrices of bytes */
    KESTU_CPU_FEATURE_SPEC_CTRL = 32 * 17 + 26,          /* a register to control speculation */
    KESTU_CPU_FEATURE_STIBP = 32 * 17 + 27,              /* branch predictors apart for threads */
    KESTU_CPU_FEATURE_FLUSH_L1D = 32 * 17 + 28,          /* the L1 data cache can be flushed */
    KESTU_CPU_FEATURE_ARCH_CAPABILITIES = 32 * 17 + 29,  /* a register of what attacks it resists */
    KESTU_CPU_FEATURE_CORE_CAPABILITIES = 32 * 17 + 30,  /* a register of what the core can do */
    KESTU_CPU_FEATURE_SSBD = 32 * 17 + 31,               /* bypass of stores can be disabled */
    /* leaf 0x7, subleaf 1, EDX */
    KESTU_CPU_FEATURE_AVX_VNNI_INT8 = 32 * 18 + 4,   /* dot products of bytes, with AVX */
    KESTU_CPU_FEATURE_AVX_NE_CONVERT = 32 * 18 + 5,  /* conversions without exceptions, with AVX */
    KESTU_CPU_FEATURE_AMX_COMPLEX = 32 * 18 + 8,     /* matrices of complex numbers */
    KESTU_CPU_FEATURE_AVX_VNNI_INT16 = 32 * 18 + 10, /* dot products of words, with AVX */
    KESTU_CPU_FEATURE_PREFETCHI = 32 * 18 + 14,      /* PREFETCHIT0 and PREFETCHIT1 */
    KESTU_CPU_FEATURE_AVX10 = 32 * 18 + 19,          /* AVX10 */
    /* leaf 0x8000001F, EAX */
    KESTU_CPU_FEATURE_SME = 32 * 19 + 0,     /* encryption of chosen memory */
    KESTU_CPU_FEATURE_SEV = 32 * 19 + 1,     /* encrypted virtual machines */
    KESTU_CPU_FEATURE_SEV_ES = 32 * 19 + 3,  /* encrypted registers of virtual machines */
    KESTU_CPU_FEATURE_SEV_SNP = 32 * 19 + 4, /* integrity of the memory of virtual machines */
};

/* What is known of a feature. */
typedef struct kestu_cpu_feature_info_t {
    const char *name; /* "avx512f" */
    const char
        *flags;      /* what /proc/cpuinfo writes for it, several words or none; null for nothing */
    int32_t feature; /* its number */
    int32_t group;   /* KESTU_CPU_INSTRUCTIONS and so on */
    int32_t needs;   /* a feature that it builds on, or KESTU_CPU_FEATURE_NONE */
    uint32_t leaf;   /* where cpuid tells it */
    uint32_t subleaf; /* and in which subleaf */
    int32_t reg;      /* 0 for EAX, 1 for EBX, 2 for ECX, 3 for EDX */
    int32_t bit;      /* of the register, 0 to 31 */
    uint64_t saved;   /* the bits of XCR0 that it takes */
} kestu_cpu_feature_info_t;

/* What a processor has, and what may be used of it. */
typedef struct kestu_cpu_features_t {
    uint32_t words[32]; /* as cpuid answered */
    uint64_t saved;     /* XCR0: the registers that the operating system saves; 0 when unknown */
    uint64_t permitted; /* the registers that this process may use */
} kestu_cpu_features_t;

/* What is known of `feature`, which stays for good; null for a number without a feature. */
KESTU_API const kestu_cpu_feature_info_t *kestu_cpu_feature_info(int feature);

/* The feature called `name`, as /proc/cpuinfo writes it; KESTU_CPU_FEATURE_NONE for none. */
KESTU_API int kestu_cpu_feature_find(const char *name);

/* The feature with the next higher number after `feature`; KESTU_CPU_FEATURE_NONE at the end. */
KESTU_API int kestu_cpu_feature_next(int feature);

/*
 * Fills `features` for the processor that the thread runs on. cpuid is asked through
 * kestu_cpu_cpuid_comm, so that a program's replayed processor answers; what is saved and permitted
 * is always told by the running system.
 */
KESTU_API void kestu_cpu_features_read(kestu_cpu_features_t *features);

/* How far `feature` has come in `features`: KESTU_CPU_ABSENT to KESTU_CPU_USABLE. */
KESTU_API int kestu_cpu_feature_state(const kestu_cpu_features_t *features, int feature);

/*
 * 1 when this process may use `feature` on the real processor, else 0; the answer is the C
 * library's and takes no cpuid. Leaves that it does not keep count as zero: they tell what only
 * the operating system has a use for.
 */
KESTU_API int kestu_cpu_feature_usable(int feature);

KESTU_END_DECLS

#endif
