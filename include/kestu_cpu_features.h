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

enum {
    KESTU_CPU_FEATURE_NONE = -1,
    KESTU_CPU_FEATURE_WORDS = 20, /* the words that hold features now */
};

/* How far a feature has come. Each state includes those before it. */
enum {
    KESTU_CPU_ABSENT = 0,
    KESTU_CPU_PRESENT = 1, /* the processor has it */
    KESTU_CPU_ENABLED = 2, /* and the operating system saves the registers that it works on */
    KESTU_CPU_USABLE = 3,  /* and this process may use them: matrices have to be asked for */
};

/* What features are for. */
enum {
    KESTU_CPU_INSTRUCTIONS = 0,
    KESTU_CPU_VECTORS = 1,
    KESTU_CPU_MATRICES = 2,
    KESTU_CPU_CRYPTOGRAPHY = 3,
    KESTU_CPU_MEMORY = 4,
    KESTU_CPU_VIRTUAL_MACHINES = 5,
    KESTU_CPU_SECURITY = 6,
    KESTU_CPU_DIAGNOSTICS = 7,
    KESTU_CPU_POWER = 8,
    KESTU_CPU_SYSTEM = 9,
};

/*
 * All features. Sources: Intel 64 and IA-32 Architectures Software Developer's Manual, volume 2A,
 * CPUID; AMD64 Architecture Programmer's Manual, volume 3, appendix E. The names are Linux's.
 */
enum {
    /* leaf 0x1, EDX */
    KESTU_CPU_FEATURE_FPU = 32 * 0 + 0,
    KESTU_CPU_FEATURE_VME = 32 * 0 + 1,
    KESTU_CPU_FEATURE_DE = 32 * 0 + 2,
    KESTU_CPU_FEATURE_PSE = 32 * 0 + 3,
    KESTU_CPU_FEATURE_TSC = 32 * 0 + 4,
    KESTU_CPU_FEATURE_MSR = 32 * 0 + 5,
    KESTU_CPU_FEATURE_PAE = 32 * 0 + 6,
    KESTU_CPU_FEATURE_MCE = 32 * 0 + 7,
    KESTU_CPU_FEATURE_CX8 = 32 * 0 + 8,
    KESTU_CPU_FEATURE_APIC = 32 * 0 + 9,
    KESTU_CPU_FEATURE_SEP = 32 * 0 + 11,
    KESTU_CPU_FEATURE_MTRR = 32 * 0 + 12,
    KESTU_CPU_FEATURE_PGE = 32 * 0 + 13,
    KESTU_CPU_FEATURE_MCA = 32 * 0 + 14,
    KESTU_CPU_FEATURE_CMOV = 32 * 0 + 15,
    KESTU_CPU_FEATURE_PAT = 32 * 0 + 16,
    KESTU_CPU_FEATURE_PSE36 = 32 * 0 + 17,
    KESTU_CPU_FEATURE_PN = 32 * 0 + 18,
    KESTU_CPU_FEATURE_CLFLUSH = 32 * 0 + 19,
    KESTU_CPU_FEATURE_DTS = 32 * 0 + 21,
    KESTU_CPU_FEATURE_ACPI = 32 * 0 + 22,
    KESTU_CPU_FEATURE_MMX = 32 * 0 + 23,
    KESTU_CPU_FEATURE_FXSR = 32 * 0 + 24,
    KESTU_CPU_FEATURE_SSE = 32 * 0 + 25,
    KESTU_CPU_FEATURE_SSE2 = 32 * 0 + 26,
    KESTU_CPU_FEATURE_SS = 32 * 0 + 27,
    KESTU_CPU_FEATURE_HT = 32 * 0 + 28,
    KESTU_CPU_FEATURE_TM = 32 * 0 + 29,
    KESTU_CPU_FEATURE_IA64 = 32 * 0 + 30,
    KESTU_CPU_FEATURE_PBE = 32 * 0 + 31,
    /* leaf 0x80000001, EDX */
    KESTU_CPU_FEATURE_SYSCALL = 32 * 1 + 11,
    KESTU_CPU_FEATURE_MP = 32 * 1 + 19,
    KESTU_CPU_FEATURE_NX = 32 * 1 + 20,
    KESTU_CPU_FEATURE_MMXEXT = 32 * 1 + 22,
    KESTU_CPU_FEATURE_FXSR_OPT = 32 * 1 + 25,
    KESTU_CPU_FEATURE_PDPE1GB = 32 * 1 + 26,
    KESTU_CPU_FEATURE_RDTSCP = 32 * 1 + 27,
    KESTU_CPU_FEATURE_LM = 32 * 1 + 29,
    KESTU_CPU_FEATURE_3DNOWEXT = 32 * 1 + 30,
    KESTU_CPU_FEATURE_3DNOW = 32 * 1 + 31,
    /* leaf 0x1, ECX */
    KESTU_CPU_FEATURE_SSE3 = 32 * 2 + 0,
    KESTU_CPU_FEATURE_PCLMULQDQ = 32 * 2 + 1,
    KESTU_CPU_FEATURE_DTES64 = 32 * 2 + 2,
    KESTU_CPU_FEATURE_MONITOR = 32 * 2 + 3,
    KESTU_CPU_FEATURE_DS_CPL = 32 * 2 + 4,
    KESTU_CPU_FEATURE_VMX = 32 * 2 + 5,
    KESTU_CPU_FEATURE_SMX = 32 * 2 + 6,
    KESTU_CPU_FEATURE_EST = 32 * 2 + 7,
    KESTU_CPU_FEATURE_TM2 = 32 * 2 + 8,
    KESTU_CPU_FEATURE_SSSE3 = 32 * 2 + 9,
    KESTU_CPU_FEATURE_CID = 32 * 2 + 10,
    KESTU_CPU_FEATURE_SDBG = 32 * 2 + 11,
    KESTU_CPU_FEATURE_FMA = 32 * 2 + 12,
    KESTU_CPU_FEATURE_CX16 = 32 * 2 + 13,
    KESTU_CPU_FEATURE_XTPR = 32 * 2 + 14,
    KESTU_CPU_FEATURE_PDCM = 32 * 2 + 15,
    KESTU_CPU_FEATURE_PCID = 32 * 2 + 17,
    KESTU_CPU_FEATURE_DCA = 32 * 2 + 18,
    KESTU_CPU_FEATURE_SSE4_1 = 32 * 2 + 19,
    KESTU_CPU_FEATURE_SSE4_2 = 32 * 2 + 20,
    KESTU_CPU_FEATURE_X2APIC = 32 * 2 + 21,
    KESTU_CPU_FEATURE_MOVBE = 32 * 2 + 22,
    KESTU_CPU_FEATURE_POPCNT = 32 * 2 + 23,
    KESTU_CPU_FEATURE_TSC_DEADLINE_TIMER = 32 * 2 + 24,
    KESTU_CPU_FEATURE_AES = 32 * 2 + 25,
    KESTU_CPU_FEATURE_XSAVE = 32 * 2 + 26,
    KESTU_CPU_FEATURE_OSXSAVE = 32 * 2 + 27,
    KESTU_CPU_FEATURE_AVX = 32 * 2 + 28,
    KESTU_CPU_FEATURE_F16C = 32 * 2 + 29,
    KESTU_CPU_FEATURE_RDRAND = 32 * 2 + 30,
    KESTU_CPU_FEATURE_HYPERVISOR = 32 * 2 + 31,
    /* leaf 0x80000001, ECX */
    KESTU_CPU_FEATURE_LAHF_LM = 32 * 3 + 0,
    KESTU_CPU_FEATURE_CMP_LEGACY = 32 * 3 + 1,
    KESTU_CPU_FEATURE_SVM = 32 * 3 + 2,
    KESTU_CPU_FEATURE_EXTAPIC = 32 * 3 + 3,
    KESTU_CPU_FEATURE_CR8_LEGACY = 32 * 3 + 4,
    KESTU_CPU_FEATURE_ABM = 32 * 3 + 5,
    KESTU_CPU_FEATURE_SSE4A = 32 * 3 + 6,
    KESTU_CPU_FEATURE_MISALIGNSSE = 32 * 3 + 7,
    KESTU_CPU_FEATURE_3DNOWPREFETCH = 32 * 3 + 8,
    KESTU_CPU_FEATURE_OSVW = 32 * 3 + 9,
    KESTU_CPU_FEATURE_IBS = 32 * 3 + 10,
    KESTU_CPU_FEATURE_XOP = 32 * 3 + 11,
    KESTU_CPU_FEATURE_SKINIT = 32 * 3 + 12,
    KESTU_CPU_FEATURE_WDT = 32 * 3 + 13,
    KESTU_CPU_FEATURE_LWP = 32 * 3 + 15,
    KESTU_CPU_FEATURE_FMA4 = 32 * 3 + 16,
    KESTU_CPU_FEATURE_TCE = 32 * 3 + 17,
    KESTU_CPU_FEATURE_NODEID_MSR = 32 * 3 + 19,
    KESTU_CPU_FEATURE_TBM = 32 * 3 + 21,
    KESTU_CPU_FEATURE_TOPOEXT = 32 * 3 + 22,
    KESTU_CPU_FEATURE_PERFCTR_CORE = 32 * 3 + 23,
    KESTU_CPU_FEATURE_PERFCTR_NB = 32 * 3 + 24,
    KESTU_CPU_FEATURE_BPEXT = 32 * 3 + 26,
    KESTU_CPU_FEATURE_PTSC = 32 * 3 + 27,
    KESTU_CPU_FEATURE_PERFCTR_LLC = 32 * 3 + 28,
    KESTU_CPU_FEATURE_MWAITX = 32 * 3 + 29,
    /* leaf 0x7, EBX */
    KESTU_CPU_FEATURE_FSGSBASE = 32 * 4 + 0,
    KESTU_CPU_FEATURE_TSC_ADJUST = 32 * 4 + 1,
    KESTU_CPU_FEATURE_SGX = 32 * 4 + 2,
    KESTU_CPU_FEATURE_BMI1 = 32 * 4 + 3,
    KESTU_CPU_FEATURE_HLE = 32 * 4 + 4,
    KESTU_CPU_FEATURE_AVX2 = 32 * 4 + 5,
    KESTU_CPU_FEATURE_SMEP = 32 * 4 + 7,
    KESTU_CPU_FEATURE_BMI2 = 32 * 4 + 8,
    KESTU_CPU_FEATURE_ERMS = 32 * 4 + 9,
    KESTU_CPU_FEATURE_INVPCID = 32 * 4 + 10,
    KESTU_CPU_FEATURE_RTM = 32 * 4 + 11,
    KESTU_CPU_FEATURE_CQM = 32 * 4 + 12,
    KESTU_CPU_FEATURE_MPX = 32 * 4 + 14,
    KESTU_CPU_FEATURE_RDT_A = 32 * 4 + 15,
    KESTU_CPU_FEATURE_AVX512F = 32 * 4 + 16,
    KESTU_CPU_FEATURE_AVX512DQ = 32 * 4 + 17,
    KESTU_CPU_FEATURE_RDSEED = 32 * 4 + 18,
    KESTU_CPU_FEATURE_ADX = 32 * 4 + 19,
    KESTU_CPU_FEATURE_SMAP = 32 * 4 + 20,
    KESTU_CPU_FEATURE_AVX512IFMA = 32 * 4 + 21,
    KESTU_CPU_FEATURE_CLFLUSHOPT = 32 * 4 + 23,
    KESTU_CPU_FEATURE_CLWB = 32 * 4 + 24,
    KESTU_CPU_FEATURE_INTEL_PT = 32 * 4 + 25,
    KESTU_CPU_FEATURE_AVX512PF = 32 * 4 + 26,
    KESTU_CPU_FEATURE_AVX512ER = 32 * 4 + 27,
    KESTU_CPU_FEATURE_AVX512CD = 32 * 4 + 28,
    KESTU_CPU_FEATURE_SHA_NI = 32 * 4 + 29,
    KESTU_CPU_FEATURE_AVX512BW = 32 * 4 + 30,
    KESTU_CPU_FEATURE_AVX512VL = 32 * 4 + 31,
    /* leaf 0xD, subleaf 1, EAX */
    KESTU_CPU_FEATURE_XSAVEOPT = 32 * 5 + 0,
    KESTU_CPU_FEATURE_XSAVEC = 32 * 5 + 1,
    KESTU_CPU_FEATURE_XGETBV1 = 32 * 5 + 2,
    KESTU_CPU_FEATURE_XSAVES = 32 * 5 + 3,
    KESTU_CPU_FEATURE_XFD = 32 * 5 + 4,
    /* leaf 0xF, EDX */
    KESTU_CPU_FEATURE_CQM_LLC = 32 * 6 + 1,
    /* leaf 0xF, subleaf 1, EDX */
    KESTU_CPU_FEATURE_CQM_OCCUP_LLC = 32 * 7 + 0,
    KESTU_CPU_FEATURE_CQM_MBM_TOTAL = 32 * 7 + 1,
    KESTU_CPU_FEATURE_CQM_MBM_LOCAL = 32 * 7 + 2,
    /* leaf 0x10, EBX */
    KESTU_CPU_FEATURE_CAT_L3 = 32 * 8 + 1,
    KESTU_CPU_FEATURE_CAT_L2 = 32 * 8 + 2,
    KESTU_CPU_FEATURE_MBA = 32 * 8 + 3,
    /* leaf 0x7, subleaf 1, EAX */
    KESTU_CPU_FEATURE_SHA512 = 32 * 9 + 0,
    KESTU_CPU_FEATURE_SM3 = 32 * 9 + 1,
    KESTU_CPU_FEATURE_SM4 = 32 * 9 + 2,
    KESTU_CPU_FEATURE_AVX_VNNI = 32 * 9 + 4,
    KESTU_CPU_FEATURE_AVX512_BF16 = 32 * 9 + 5,
    KESTU_CPU_FEATURE_CMPCCXADD = 32 * 9 + 7,
    KESTU_CPU_FEATURE_FZRM = 32 * 9 + 10,
    KESTU_CPU_FEATURE_FSRS = 32 * 9 + 11,
    KESTU_CPU_FEATURE_FSRC = 32 * 9 + 12,
    KESTU_CPU_FEATURE_FRED = 32 * 9 + 17,
    KESTU_CPU_FEATURE_LKGS = 32 * 9 + 18,
    KESTU_CPU_FEATURE_WRMSRNS = 32 * 9 + 19,
    KESTU_CPU_FEATURE_AMX_FP16 = 32 * 9 + 21,
    KESTU_CPU_FEATURE_AVX_IFMA = 32 * 9 + 23,
    KESTU_CPU_FEATURE_LAM = 32 * 9 + 26,
    /* leaf 0x80000008, EBX */
    KESTU_CPU_FEATURE_CLZERO = 32 * 10 + 0,
    KESTU_CPU_FEATURE_IRPERF = 32 * 10 + 1,
    KESTU_CPU_FEATURE_XSAVEERPTR = 32 * 10 + 2,
    KESTU_CPU_FEATURE_RDPRU = 32 * 10 + 4,
    KESTU_CPU_FEATURE_WBNOINVD = 32 * 10 + 9,
    KESTU_CPU_FEATURE_AMD_IBPB = 32 * 10 + 12,
    KESTU_CPU_FEATURE_AMD_IBRS = 32 * 10 + 14,
    KESTU_CPU_FEATURE_AMD_STIBP = 32 * 10 + 15,
    KESTU_CPU_FEATURE_AMD_PPIN = 32 * 10 + 23,
    KESTU_CPU_FEATURE_AMD_SSBD = 32 * 10 + 24,
    KESTU_CPU_FEATURE_VIRT_SSBD = 32 * 10 + 25,
    KESTU_CPU_FEATURE_CPPC = 32 * 10 + 27,
    KESTU_CPU_FEATURE_BRS = 32 * 10 + 31,
    /* leaf 0x6, EAX */
    KESTU_CPU_FEATURE_DTHERM = 32 * 11 + 0,
    KESTU_CPU_FEATURE_IDA = 32 * 11 + 1,
    KESTU_CPU_FEATURE_ARAT = 32 * 11 + 2,
    KESTU_CPU_FEATURE_PLN = 32 * 11 + 4,
    KESTU_CPU_FEATURE_PTS = 32 * 11 + 6,
    KESTU_CPU_FEATURE_HWP = 32 * 11 + 7,
    KESTU_CPU_FEATURE_HWP_NOTIFY = 32 * 11 + 8,
    KESTU_CPU_FEATURE_HWP_ACT_WINDOW = 32 * 11 + 9,
    KESTU_CPU_FEATURE_HWP_EPP = 32 * 11 + 10,
    KESTU_CPU_FEATURE_HWP_PKG_REQ = 32 * 11 + 11,
    KESTU_CPU_FEATURE_HFI = 32 * 11 + 19,
    /* leaf 0x6, ECX */
    KESTU_CPU_FEATURE_APERFMPERF = 32 * 12 + 0,
    KESTU_CPU_FEATURE_EPB = 32 * 12 + 3,
    /* leaf 0x8000000A, EDX */
    KESTU_CPU_FEATURE_NPT = 32 * 13 + 0,
    KESTU_CPU_FEATURE_LBRV = 32 * 13 + 1,
    KESTU_CPU_FEATURE_SVM_LOCK = 32 * 13 + 2,
    KESTU_CPU_FEATURE_NRIP_SAVE = 32 * 13 + 3,
    KESTU_CPU_FEATURE_TSC_SCALE = 32 * 13 + 4,
    KESTU_CPU_FEATURE_VMCB_CLEAN = 32 * 13 + 5,
    KESTU_CPU_FEATURE_FLUSHBYASID = 32 * 13 + 6,
    KESTU_CPU_FEATURE_DECODEASSISTS = 32 * 13 + 7,
    KESTU_CPU_FEATURE_PAUSEFILTER = 32 * 13 + 10,
    KESTU_CPU_FEATURE_PFTHRESHOLD = 32 * 13 + 12,
    KESTU_CPU_FEATURE_AVIC = 32 * 13 + 13,
    KESTU_CPU_FEATURE_V_VMSAVE_VMLOAD = 32 * 13 + 15,
    KESTU_CPU_FEATURE_VGIF = 32 * 13 + 16,
    KESTU_CPU_FEATURE_X2AVIC = 32 * 13 + 18,
    KESTU_CPU_FEATURE_V_SPEC_CTRL = 32 * 13 + 20,
    KESTU_CPU_FEATURE_VNMI = 32 * 13 + 25,
    /* leaf 0x7, ECX */
    KESTU_CPU_FEATURE_PREFETCHWT1 = 32 * 14 + 0,
    KESTU_CPU_FEATURE_AVX512VBMI = 32 * 14 + 1,
    KESTU_CPU_FEATURE_UMIP = 32 * 14 + 2,
    KESTU_CPU_FEATURE_PKU = 32 * 14 + 3,
    KESTU_CPU_FEATURE_OSPKE = 32 * 14 + 4,
    KESTU_CPU_FEATURE_WAITPKG = 32 * 14 + 5,
    KESTU_CPU_FEATURE_AVX512_VBMI2 = 32 * 14 + 6,
    KESTU_CPU_FEATURE_SHSTK = 32 * 14 + 7,
    KESTU_CPU_FEATURE_GFNI = 32 * 14 + 8,
    KESTU_CPU_FEATURE_VAES = 32 * 14 + 9,
    KESTU_CPU_FEATURE_VPCLMULQDQ = 32 * 14 + 10,
    KESTU_CPU_FEATURE_AVX512_VNNI = 32 * 14 + 11,
    KESTU_CPU_FEATURE_AVX512_BITALG = 32 * 14 + 12,
    KESTU_CPU_FEATURE_TME = 32 * 14 + 13,
    KESTU_CPU_FEATURE_AVX512_VPOPCNTDQ = 32 * 14 + 14,
    KESTU_CPU_FEATURE_LA57 = 32 * 14 + 16,
    KESTU_CPU_FEATURE_RDPID = 32 * 14 + 22,
    KESTU_CPU_FEATURE_BUS_LOCK_DETECT = 32 * 14 + 24,
    KESTU_CPU_FEATURE_CLDEMOTE = 32 * 14 + 25,
    KESTU_CPU_FEATURE_MOVDIRI = 32 * 14 + 27,
    KESTU_CPU_FEATURE_MOVDIR64B = 32 * 14 + 28,
    KESTU_CPU_FEATURE_ENQCMD = 32 * 14 + 29,
    KESTU_CPU_FEATURE_SGX_LC = 32 * 14 + 30,
    /* leaf 0x80000007, EBX */
    KESTU_CPU_FEATURE_OVERFLOW_RECOV = 32 * 15 + 0,
    KESTU_CPU_FEATURE_SUCCOR = 32 * 15 + 1,
    KESTU_CPU_FEATURE_SMCA = 32 * 15 + 3,
    /* leaf 0x80000007, EDX */
    KESTU_CPU_FEATURE_TS = 32 * 16 + 0,
    KESTU_CPU_FEATURE_FID = 32 * 16 + 1,
    KESTU_CPU_FEATURE_VID = 32 * 16 + 2,
    KESTU_CPU_FEATURE_TTP = 32 * 16 + 3,
    KESTU_CPU_FEATURE_HTC = 32 * 16 + 4,
    KESTU_CPU_FEATURE_STC = 32 * 16 + 5,
    KESTU_CPU_FEATURE_HW_PSTATE = 32 * 16 + 7,
    KESTU_CPU_FEATURE_NONSTOP_TSC = 32 * 16 + 8,
    KESTU_CPU_FEATURE_CPB = 32 * 16 + 9,
    KESTU_CPU_FEATURE_PROC_FEEDBACK = 32 * 16 + 11,
    KESTU_CPU_FEATURE_ACC_POWER = 32 * 16 + 12,
    /* leaf 0x7, EDX */
    KESTU_CPU_FEATURE_AVX512_4VNNIW = 32 * 17 + 2,
    KESTU_CPU_FEATURE_AVX512_4FMAPS = 32 * 17 + 3,
    KESTU_CPU_FEATURE_FSRM = 32 * 17 + 4,
    KESTU_CPU_FEATURE_UINTR = 32 * 17 + 5,
    KESTU_CPU_FEATURE_AVX512_VP2INTERSECT = 32 * 17 + 8,
    KESTU_CPU_FEATURE_MD_CLEAR = 32 * 17 + 10,
    KESTU_CPU_FEATURE_RTM_ALWAYS_ABORT = 32 * 17 + 11,
    KESTU_CPU_FEATURE_SERIALIZE = 32 * 17 + 14,
    KESTU_CPU_FEATURE_HYBRID = 32 * 17 + 15,
    KESTU_CPU_FEATURE_TSXLDTRK = 32 * 17 + 16,
    KESTU_CPU_FEATURE_PCONFIG = 32 * 17 + 18,
    KESTU_CPU_FEATURE_ARCH_LBR = 32 * 17 + 19,
    KESTU_CPU_FEATURE_IBT = 32 * 17 + 20,
    KESTU_CPU_FEATURE_AMX_BF16 = 32 * 17 + 22,
    KESTU_CPU_FEATURE_AVX512_FP16 = 32 * 17 + 23,
    KESTU_CPU_FEATURE_AMX_TILE = 32 * 17 + 24,
    KESTU_CPU_FEATURE_AMX_INT8 = 32 * 17 + 25,
    KESTU_CPU_FEATURE_SPEC_CTRL = 32 * 17 + 26,
    KESTU_CPU_FEATURE_STIBP = 32 * 17 + 27,
    KESTU_CPU_FEATURE_FLUSH_L1D = 32 * 17 + 28,
    KESTU_CPU_FEATURE_ARCH_CAPABILITIES = 32 * 17 + 29,
    KESTU_CPU_FEATURE_CORE_CAPABILITIES = 32 * 17 + 30,
    KESTU_CPU_FEATURE_SSBD = 32 * 17 + 31,
    /* leaf 0x7, subleaf 1, EDX */
    KESTU_CPU_FEATURE_AVX_VNNI_INT8 = 32 * 18 + 4,
    KESTU_CPU_FEATURE_AVX_NE_CONVERT = 32 * 18 + 5,
    KESTU_CPU_FEATURE_AMX_COMPLEX = 32 * 18 + 8,
    KESTU_CPU_FEATURE_AVX_VNNI_INT16 = 32 * 18 + 10,
    KESTU_CPU_FEATURE_PREFETCHI = 32 * 18 + 14,
    KESTU_CPU_FEATURE_AVX10 = 32 * 18 + 19,
    /* leaf 0x8000001F, EAX */
    KESTU_CPU_FEATURE_SME = 32 * 19 + 0,
    KESTU_CPU_FEATURE_SEV = 32 * 19 + 1,
    KESTU_CPU_FEATURE_SEV_ES = 32 * 19 + 3,
    KESTU_CPU_FEATURE_SEV_SNP = 32 * 19 + 4,
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
    uint32_t subleaf;
    int32_t reg; /* 0 for EAX, 1 for EBX, 2 for ECX, 3 for EDX */
    int32_t bit;
    uint64_t saved; /* the bits of XCR0 that it takes */
} kestu_cpu_feature_info_t;

/* What a processor has, and what may be used of it. */
typedef struct kestu_cpu_features_t {
    uint32_t words[32]; /* as cpuid answered */
    uint64_t saved;     /* XCR0: the registers that the operating system saves; 0 when unknown */
    uint64_t permitted; /* those of them that this process may use */
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
