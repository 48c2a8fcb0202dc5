/*
 * The processor: what it is, what it can do, how its packages, cores, threads and caches are laid
 * out, and binding threads to it.
 *
 *     static kestu_cpu_t cpu;                             // zeros, some 130 KB
 *     kestu_error_t *err = kestu_cpu_detect(&cpu, pool);
 *     if (!err)
 *         printf("%s: %u cores, %u threads\n", cpu.name, cpu.core_count, cpu.thread_count);
 *
 * A record belongs to the caller, stands alone and may be copied; zero it before its first use. It
 * is too large for a small stack. Detection moves the calling thread from processor to processor;
 * no function keeps state, so that all may run on several threads at once.
 *
 * Everything is read through kestu_cpu_cpuid_comm, which the library calls as any program does: a
 * program that defines a function of this name replays another processor. Defining
 * kestu_mach_os_cpu_num, kestu_cpu_set_chk_process_affinity_consistency and
 * kestu_cpu_bind_context_to_logcpu too, it replays a machine of many.
 */
#ifndef KESTU_CPU_H
#define KESTU_CPU_H

#include "kestu_error.h"

#include <apr_pools.h>

#include <stdint.h>

KESTU_BEGIN_DECLS

/* What a record has room for. */
enum {
    KESTU_CPU_MAX_PROCESSORS = 1024, /* what an affinity set of the system holds */
    KESTU_CPU_MAX_CACHES = 16,       /* kinds of caches in a record */
};

/* Vendor codes. */
enum {
    KESTU_CPU_UNKNOWN = 0,   /* none of those below */
    KESTU_CPU_INTEL = 1,     /* Intel */
    KESTU_CPU_AMD = 2,       /* AMD */
    KESTU_CPU_TRANSMETA = 3, /* Transmeta */
    KESTU_CPU_SIS = 4,       /* SiS */
    KESTU_CPU_RISE = 5,      /* Rise */
    KESTU_CPU_CENTAUR = 6,   /* Centaur */
    KESTU_CPU_NEXGEN = 7,    /* NexGen */
    KESTU_CPU_UMC = 8,       /* UMC */
    KESTU_CPU_CYRIX = 9,     /* Cyrix */
    KESTU_CPU_NSC = 10,      /* National Semiconductor */
};

/* Types of caches; 4 and above are undefined. */
enum {
    KESTU_CPU_CACHE_NULL = 0,        /* none */
    KESTU_CPU_CACHE_DATA = 1,        /* for data */
    KESTU_CPU_CACHE_INSTRUCTION = 2, /* for instructions */
    KESTU_CPU_CACHE_UNIFIED = 3,     /* for both */
};

/* The cache identifier of a processor that has no cache of a kind. */
#define KESTU_CPU_NO_CACHE UINT32_C(0xFFFFFFFF)

/*
 * The feature flags of leaf 1, each 0 or 1, with their registers and bits. Those with a star are
 * read from Intel's processors and stay 0 on others. A flag tells what the processor can do, not
 * what the operating system lets programs use.
 */
typedef struct kestu_cpu_flags_t {
    int32_t sse3;    /* ECX 0 SSE3 */
    int32_t monitor; /* ECX 3 * MONITOR and MWAIT */
    int32_t ds_cpl;  /* ECX 4 * debug store qualified by the privilege level */
    int32_t eist;    /* ECX 7 * enhanced SpeedStep */
    int32_t tm2;     /* ECX 8 * thermal monitor 2 */
    int32_t ssse3;   /* ECX 9 SSSE3 */
    int32_t cnxt_id; /* ECX 10 * L1 context identifier */
    int32_t sse41;   /* ECX 19 SSE4.1 */
    int32_t sse42;   /* ECX 20 SSE4.2 */
    int32_t avx;     /* ECX 28 AVX */
    int32_t fpu;     /* EDX 0 x87 floating point */
    int32_t vme;     /* EDX 1 virtual 8086 mode enhancements */
    int32_t de;      /* EDX 2 debugging extensions */
    int32_t pse;     /* EDX 3 page size extension */
    int32_t tsc;     /* EDX 4 time-stamp counter */
    int32_t msr;     /* EDX 5 model-specific registers */
    int32_t pae;     /* EDX 6 physical address extension */
    int32_t mce;     /* EDX 7 machine check exception */
    int32_t cx8;     /* EDX 8 CMPXCHG8B */
    int32_t apic;    /* EDX 9 local interrupt controller */
    int32_t sep;     /* EDX 11 SYSENTER and SYSEXIT */
    int32_t mtrr;    /* EDX 12 memory type range registers */
    int32_t pge;     /* EDX 13 global pages */
    int32_t mca;     /* EDX 14 machine check architecture */
    int32_t cmov;    /* EDX 15 CMOVcc */
    int32_t pat;     /* EDX 16 page attribute table */
    int32_t pse36;   /* EDX 17 large pages above 4 GiB */
    int32_t psn;     /* EDX 18 * serial number */
    int32_t clfsh;   /* EDX 19 * CLFLUSH */
    int32_t ds;      /* EDX 21 * debug store */
    int32_t acpi;    /* EDX 22 * thermal monitor and clock control */
    int32_t mmx;     /* EDX 23 MMX */
    int32_t fxsr;    /* EDX 24 FXSAVE and FXRSTOR */
    int32_t sse;     /* EDX 25 SSE */
    int32_t sse2;    /* EDX 26 SSE2 */
    int32_t ss;      /* EDX 27 * self snoop */
    int32_t htt;     /* EDX 28 a package may hold several logical processors */
    int32_t tm;      /* EDX 29 * thermal monitor */
    int32_t ia64;    /* EDX 30 * an IA-64 processor that emulates x86 */
    int32_t pbe;     /* EDX 31 * pending break enable */
} kestu_cpu_flags_t;

/*
 * How an APIC identifier is split: thread in the lowest bits, core above, package on top. Widths in
 * bits; the masks stand where the field stands.
 */
typedef struct kestu_cpu_split_t {
    uint32_t thread_mask;           /* the bits of the thread within its core */
    uint32_t thread_width;          /* how many bits the thread has */
    uint32_t core_mask;             /* the bits of the core within its package */
    uint32_t core_width;            /* how many bits the core has */
    uint32_t core_and_thread_width; /* how far the package is from bit 0 */
    uint32_t package_mask;          /* the bits of the package */
} kestu_cpu_split_t;

/* What only AMD's leaves tell, with the leaves, registers and bits. */
typedef struct kestu_cpu_amd_t {
    uint32_t brand_id;        /* 0x80000001 EBX 0-11 */
    int32_t sse4a;            /* 0x80000001 ECX 6 SSE4a */
    int32_t xop;              /* 0x80000001 ECX 11 XOP */
    int32_t edx18;            /* 0x80000001 EDX 18, without a name in the manuals */
    int32_t mp;               /* 0x80000001 EDX 19 multiprocessing capable */
    int32_t nx;               /* 0x80000001 EDX 20 no-execute pages */
    int32_t edx21;            /* 0x80000001 EDX 21, without a name in the manuals */
    int32_t mmxext;           /* 0x80000001 EDX 22 AMD's extensions of MMX */
    int32_t lm;               /* 0x80000001 EDX 29 long mode */
    int32_t amd3dnowext;      /* 0x80000001 EDX 30 extensions of 3DNow! */
    int32_t amd3dnow;         /* 0x80000001 EDX 31 3DNow! */
    uint32_t l1_data;         /* 0x80000005 ECX, the descriptor of the data cache */
    uint32_t l1_instruction;  /* 0x80000005 EDX, the descriptor of the instruction cache */
    uint32_t l2_kb;           /* 0x80000006 ECX size of the L2 cache */
    uint32_t l3_kb;           /* 0x80000006 EDX size of the L3 cache */
    int32_t ts;               /* 0x80000007 EDX 0 temperature sensor */
    int32_t fid;              /* 0x80000007 EDX 1 frequency control */
    int32_t vid;              /* 0x80000007 EDX 2 voltage control */
    int32_t ttp;              /* 0x80000007 EDX 3 thermal trip */
    int32_t htc;              /* 0x80000007 EDX 4 hardware thermal control */
    int32_t stc;              /* 0x80000007 EDX 5 software thermal control */
    uint32_t physical_bits;   /* 0x80000008 of physical addresses */
    uint32_t linear_bits;     /* 0x80000008 of linear addresses */
    uint32_t cores_minus_one; /* 0x80000008 logical processors of the package, less one */
    uint32_t apic_core_bits;  /* 0x80000008 width of the APIC identifier below the package, or 0 */
    uint32_t svm_revision;    /* 0x8000000A of the secure virtual machine */
    uint32_t svm_asids; /* 0x8000000A address space identifiers of the secure virtual machine */
} kestu_cpu_amd_t;

/* What only Intel's leaves tell. */
typedef struct kestu_cpu_intel_t {
    int32_t lm;         /* 64-bit capable */
    int32_t leaf_b;     /* leaf 0xB is available */
    int32_t restricted; /* the firmware hides leaves */
    /* sharing masks of four levels of caches, for processors that describe none by leaf 4 */
    uint32_t cache_mask[4];
    uint32_t cache_mask_width[4]; /* widths of the sharing masks */
} kestu_cpu_intel_t;

/* Identification: what kestu_cpu_intel_func and kestu_cpu_amd_func read on one processor. */
typedef struct kestu_cpu_id_t {
    uint32_t highest_leaf;          /* EAX of leaf 0 */
    uint32_t highest_extended_leaf; /* EAX of leaf 0x80000000 */
    uint32_t stepping;              /* bits 0-3 of the signature */
    uint32_t model;                 /* bits 4-7 */
    uint32_t family;                /* bits 8-11 */
    uint32_t type;                  /* bits 12-13 */
    uint32_t extended_model;        /* bits 16-19 */
    uint32_t extended_family;       /* bits 20-27 */
    uint32_t signature;             /* the whole of leaf 1 EAX */
    uint32_t display_family;        /* family + extended family */
    uint32_t display_model;         /* model + extended model * 16 */
    uint32_t brand_index;           /* leaf 1 EBX, bits 0-7 */
    uint32_t logical_processors;    /* identifiers that a package takes up, when flags.htt is set */
    uint32_t initial_apic_id;       /* leaf 1 EBX, bits 24-31 */
    kestu_cpu_flags_t flags;        /* the feature flags of leaf 1 */
    kestu_cpu_split_t split;        /* how APIC identifiers are split */
    kestu_cpu_amd_t amd;            /* what AMD's leaves tell */
    kestu_cpu_intel_t intel;        /* what Intel's leaves tell */
} kestu_cpu_id_t;

/* One kind of cache. */
typedef struct kestu_cpu_cache_t {
    uint32_t level;         /* 1, 2, 3 */
    uint32_t type;          /* KESTU_CPU_CACHE_DATA and so on */
    uint32_t size_kb;       /* in units of 1024 bytes */
    uint32_t line;          /* bytes of a line */
    uint32_t ways;          /* of associativity */
    uint32_t partitions;    /* lines that share a tag */
    uint32_t sets;          /* sets of lines */
    uint32_t shared_by;     /* how many logical processors may share one at most */
    uint32_t sharing_mask;  /* the bits of APIC identifiers in which those that share one differ */
    uint32_t sharing_width; /* the width of the sharing mask */
    uint32_t count;         /* how many of this kind there are */
    char label[64];         /* "L1d" */
    char description[256];  /* "Level 1 Data cache, size(KBytes)= 32" */
} kestu_cpu_cache_t;

/* One logical processor. */
typedef struct kestu_cpu_processor_t {
    uint32_t index;   /* as the operating system counts */
    uint32_t apic_id; /* the x2APIC identifier where there is one */
    uint32_t package; /* that of the package: a field of the identifier, moved down to bit 0 */
    uint32_t core;    /* that of the core */
    uint32_t thread;  /* that of the thread */
    /* those with the same value share a cache; parallel to the record's caches */
    uint32_t cache[KESTU_CPU_MAX_CACHES];
    double mhz; /* measured rate of the time-stamp counter, 0.0 when not measured */
} kestu_cpu_processor_t;

/* One core. */
typedef struct kestu_cpu_core_t {
    uint32_t package;      /* identifier of its package, as in kestu_cpu_processor_t */
    uint32_t core;         /* its own identifier in the package */
    uint32_t thread_count; /* its logical processors */
} kestu_cpu_core_t;

/* One package. */
typedef struct kestu_cpu_package_t {
    uint32_t package;      /* its identifier, as in kestu_cpu_processor_t */
    uint32_t core_count;   /* its cores */
    uint32_t thread_count; /* its logical processors */
} kestu_cpu_package_t;

/*
 * The record. Texts are always terminated; names are as the processor gives them, blanks in front
 * included. Intel's and AMD's processors fill everything, others the vendor and name alone.
 */
typedef struct kestu_cpu_t {
    uint32_t vendor;      /* KESTU_CPU_INTEL and so on */
    char vendor_name[80]; /* the maker's name */
    char vendor_id[80];   /* the 12 characters that leaf 0 gives */
    char name[80];        /* left as it was when the processor has no name */

    kestu_cpu_id_t id; /* of the first processor */

    /* the caller's request: not 0 to have clock rates measured, each in 20 to 100 ms */
    int32_t measure;
    int32_t measure_processor; /* the one to measure; -1 for every one */

    uint32_t package_count;                         /* how many packages there are */
    uint32_t core_count;                            /* how many cores there are */
    uint32_t thread_count;                          /* how many logical processors there are */
    uint32_t cache_count;                           /* how many kinds of caches there are */
    kestu_cpu_cache_t caches[KESTU_CPU_MAX_CACHES]; /* the kinds of caches */
    kestu_cpu_package_t packages[KESTU_CPU_MAX_PROCESSORS];     /* the packages */
    kestu_cpu_core_t cores[KESTU_CPU_MAX_PROCESSORS];           /* the cores */
    kestu_cpu_processor_t processors[KESTU_CPU_MAX_PROCESSORS]; /* the logical processors */

    int32_t os_sse; /* the operating system supports SSE */

    uint32_t reserved[127]; /* room for later fields */
} kestu_cpu_t;

/* An affinity mask: processor n is bit n mod 8 of byte n / 8. The bytes are the user's. */
typedef struct kestu_cpu_genaffinity {
    uint32_t size; /* bytes */
    uint8_t *bits; /* the bytes of the mask */
} kestu_cpu_genaffinity;

/* Always 0; kept for programs that read it. */
KESTU_API extern int32_t os_sse;

/*
 * Executes cpuid for `leaf` and `subleaf` on the processor that the thread runs on, and stores the
 * registers through `eax`, `ebx`, `ecx` and `edx`. The library has the instruction nowhere else.
 */
KESTU_API void kestu_cpu_cpuid_comm(uint32_t leaf, uint32_t subleaf, uint32_t *eax, uint32_t *ebx,
                                    uint32_t *ecx, uint32_t *edx);

/* Bits `low` to `high` of `value`, both inclusive, moved down to bit 0; `high` is at most 31. */
KESTU_API uint32_t get_bits_from_uint32(uint32_t value, uint8_t low, uint8_t high);

/* 1 when bit `bit` of `word` is set, else 0. */
KESTU_API int kestu_cpu_check_flag(uint32_t bit, uint32_t word);

/* 1 when the processor has cpuid, which on x86-64 it always has. */
KESTU_API int kestu_cpu_check_cpuid_flag(void);

/* Sets the flag os_sse of `record`: every x86-64 system saves the registers of SSE. */
KESTU_API void kestu_cpu_check_os_sse(kestu_cpu_t *record);

/*
 * Fills the identification, the caches and the name of `record` from the processor that the thread
 * runs on, by AMD's rules. Always returns 0. Source: AMD64 Architecture Programmer's Manual, volume
 * 3, appendix E.
 */
KESTU_API int kestu_cpu_amd_func(kestu_cpu_t *record);

/*
 * As kestu_cpu_amd_func, by Intel's rules. Errors, under "Error in Intel CPUID processing.":
 * KESTU_ERR_NO_THREAD_LEVEL (120171) when leaf 0xB tells no thread level and
 * KESTU_ERR_CPUID_RESTRICTED (120172) when the firmware hides the leaves that tell the cores; the
 * identification and the name are then filled, the caches are none. Source: Intel 64 and IA-32
 * Architectures Software Developer's Manual, volume 2A, CPUID, and volume 3A, 9.9.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_intel_func(kestu_cpu_t *record);

/*
 * As kestu_cpu_amd_func for every processor in turn, with the counts and places of packages, cores,
 * threads and caches, and the clock rates that `record` asks for. Scratch memory comes from `pool`.
 * The thread stays bound to the last processor visited. Errors: those of
 * kestu_cpu_set_chk_process_affinity_consistency and of kestu_cpu_bind_context_to_logcpu;
 * KESTU_ERR_TOPOLOGY (120175) "AMD CPU topology detection error %d." when the processors contradict
 * each other; APR's when no memory is left.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_amd_topology(kestu_cpu_t *record,
                                                               apr_pool_t *pool);

/*
 * As kestu_cpu_amd_topology, by Intel's rules: errors are those of kestu_cpu_intel_func too, and
 * KESTU_ERR_TOPOLOGY (120175) says "Intel CPU topology detection error %d.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_intel_topology(kestu_cpu_t *record,
                                                                 apr_pool_t *pool);

/*
 * Fills `record`: for Intel's and AMD's processors as kestu_cpu_intel_topology and
 * kestu_cpu_amd_topology do, for others the vendor and the name. Scratch memory comes from a child
 * of `pool` that lives only during the call. The affinity of the calling thread is as before in
 * every outcome. Errors stand under "Can't determine CPU.": KESTU_ERR_AFFINITY (120173) with the
 * system's text when the affinity cannot be read or restored, or when the process may not run on
 * all processors (the record then holds the vendor alone), KESTU_ERR_NO_CPUID (120170) without
 * cpuid, and those of the functions that it calls.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_detect(kestu_cpu_t *record, apr_pool_t *pool);

/*
 * Fills `record` as kestu_cpu_detect, but visits the processors of `processors` alone, or with null
 * those that the calling thread may run on: a container's, or those that taskset has left. Those
 * that the thread cannot be bound to are left out; `processors` of the record tells which were
 * visited. Scratch memory comes from a child of `pool`. Fails as kestu_cpu_detect, with
 * KESTU_ERR_BIND (120174) when none could be visited.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_cpu_detect_on(kestu_cpu_t *record, const kestu_cpu_genaffinity *processors, apr_pool_t *pool);

/*
 * The measured rate of the time-stamp counter in MHz. Rounds of 10 ms are taken until two that
 * follow each other agree within a tenth, at most ten.
 */
KESTU_API double kestu_cpu_freq(void);

/* Removes all processors from `mask`. */
KESTU_API void intel_cpuid_clear_genaffinity_mask(kestu_cpu_genaffinity *mask);

/*
 * Adds processor `cpu` to `mask`. Error KESTU_ERR_AFFINITY (120173) "Can't set cpu %u bit (mask
 * supports only up to %u cpus).", with nothing changed, for a processor beyond the mask.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *intel_cpuid_set_genaffinity_bit(kestu_cpu_genaffinity *mask,
                                                                        uint32_t cpu);

/*
 * As intel_cpuid_set_genaffinity_bit, but toggles the processor: it removes only one that is there,
 * and one that is not is added. The error says "Can't clear".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
intel_cpuid_clear_genaffinity_bit(kestu_cpu_genaffinity *mask, uint32_t cpu);

/*
 * As intel_cpuid_set_genaffinity_bit, but stores 1 through `result` when the processor is in the
 * mask and else 0. The error says "Can't test".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
cpuid_test_genaffinity_bit(const kestu_cpu_genaffinity *mask, uint32_t cpu, int *result);

/*
 * 0 when `a` and `b` hold the same processors, whatever their sizes, and 1 when they differ. A mask
 * of size 0 differs from every other, an empty one included.
 */
KESTU_API int intel_cpuid_cmp_equal_genaffinity(const kestu_cpu_genaffinity *a,
                                                const kestu_cpu_genaffinity *b);

/*
 * Binds the calling thread to logical processor `cpu`. Error KESTU_ERR_BIND (120174) with the
 * system's text under "Failed to bind context to a logical processor."; the thread's affinity is
 * then as before.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_bind_context_to_logcpu(uint32_t cpu);

/*
 * Adds processors 0 to `count` - 1 to `mask`, after checking for each that the process may run on
 * it. At the first where it may not, KESTU_ERR_AFFINITY (120173) with the text of errno; at the end
 * of the mask, the error of intel_cpuid_set_genaffinity_bit. Those before it are then added. A
 * count of 0 does nothing.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_cpu_set_chk_process_affinity_consistency(kestu_cpu_genaffinity *mask, uint32_t count);

KESTU_END_DECLS

#endif
