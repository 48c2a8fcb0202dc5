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

enum {
    KESTU_CPU_MAX_PROCESSORS = 1024, /* what an affinity set of the system holds */
    KESTU_CPU_MAX_CACHES = 16,
};

/* Vendor codes. */
enum {
    KESTU_CPU_UNKNOWN = 0,
    KESTU_CPU_INTEL = 1,
    KESTU_CPU_AMD = 2,
    KESTU_CPU_TRANSMETA = 3,
    KESTU_CPU_SIS = 4,
    KESTU_CPU_RISE = 5,
    KESTU_CPU_CENTAUR = 6,
    KESTU_CPU_NEXGEN = 7,
    KESTU_CPU_UMC = 8,
    KESTU_CPU_CYRIX = 9,
    KESTU_CPU_NSC = 10,
};

/* Types of caches; 4 and above are undefined. */
enum {
    KESTU_CPU_CACHE_NULL = 0,
    KESTU_CPU_CACHE_DATA = 1,
    KESTU_CPU_CACHE_INSTRUCTION = 2,
    KESTU_CPU_CACHE_UNIFIED = 3,
};

/* The cache identifier of a processor that has no cache of a kind. */
#define KESTU_CPU_NO_CACHE UINT32_C(0xFFFFFFFF)

/*
 * The feature flags of leaf 1, each 0 or 1. Those with a star are read from Intel's processors and
 * stay 0 on others. A flag tells what the processor can do, not what the operating system lets
 * programs use.
 */
typedef struct kestu_cpu_flags_t {
    /* ECX */
    int32_t sse3;    /*  0 */
    int32_t monitor; /*  3 * MONITOR and MWAIT */
    int32_t ds_cpl;  /*  4 * debug store qualified by the privilege level */
    int32_t eist;    /*  7 * enhanced SpeedStep */
    int32_t tm2;     /*  8 * thermal monitor 2 */
    int32_t ssse3;   /*  9 */
    int32_t cnxt_id; /* 10 * L1 context identifier */
    int32_t sse41;   /* 19 */
    int32_t sse42;   /* 20 */
    int32_t avx;     /* 28 */
    /* EDX */
    int32_t fpu;   /*  0 */
    int32_t vme;   /*  1 virtual 8086 mode enhancements */
    int32_t de;    /*  2 debugging extensions */
    int32_t pse;   /*  3 page size extension */
    int32_t tsc;   /*  4 time-stamp counter */
    int32_t msr;   /*  5 model-specific registers */
    int32_t pae;   /*  6 physical address extension */
    int32_t mce;   /*  7 machine check exception */
    int32_t cx8;   /*  8 CMPXCHG8B */
    int32_t apic;  /*  9 */
    int32_t sep;   /* 11 SYSENTER and SYSEXIT */
    int32_t mtrr;  /* 12 memory type range registers */
    int32_t pge;   /* 13 global pages */
    int32_t mca;   /* 14 machine check architecture */
    int32_t cmov;  /* 15 */
    int32_t pat;   /* 16 page attribute table */
    int32_t pse36; /* 17 */
    int32_t psn;   /* 18 * serial number */
    int32_t clfsh; /* 19 * CLFLUSH */
    int32_t ds;    /* 21 * debug store */
    int32_t acpi;  /* 22 * thermal monitor and clock control */
    int32_t mmx;   /* 23 */
    int32_t fxsr;  /* 24 FXSAVE and FXRSTOR */
    int32_t sse;   /* 25 */
    int32_t sse2;  /* 26 */
    int32_t ss;    /* 27 * self snoop */
    int32_t htt;   /* 28 a package may hold several logical processors */
    int32_t tm;    /* 29 * thermal monitor */
    int32_t ia64;  /* 30 * an IA-64 processor that emulates x86 */
    int32_t pbe;   /* 31 * pending break enable */
} kestu_cpu_flags_t;

/*
 * How an APIC identifier is split: thread in the lowest bits, core above, package on top. Widths in
 * bits; the masks stand where the field stands.
 */
typedef struct kestu_cpu_split_t {
    uint32_t thread_mask;
    uint32_t thread_width;
    uint32_t core_mask;
    uint32_t core_width;
    uint32_t core_and_thread_width;
    uint32_t package_mask;
} kestu_cpu_split_t;

/* What only AMD's leaves tell. */
typedef struct kestu_cpu_amd_t {
    /* Leaf 0x80000001 */
    uint32_t brand_id;   /* EBX 0-11 */
    int32_t sse4a;       /* ECX 6 */
    int32_t xop;         /* ECX 11 */
    int32_t edx18;       /* EDX 18, without a name in the manuals */
    int32_t mp;          /* EDX 19 multiprocessing capable */
    int32_t nx;          /* EDX 20 no-execute pages */
    int32_t edx21;       /* EDX 21, without a name in the manuals */
    int32_t mmxext;      /* EDX 22 */
    int32_t lm;          /* EDX 29 long mode */
    int32_t amd3dnowext; /* EDX 30 */
    int32_t amd3dnow;    /* EDX 31 */
    /* Leaf 0x80000005 */
    uint32_t l1_data;        /* the descriptor as it stands in ECX */
    uint32_t l1_instruction; /* EDX */
    /* Leaf 0x80000006 */
    uint32_t l2_kb;
    uint32_t l3_kb;
    /* Leaf 0x80000007, EDX 0-5: power management */
    int32_t ts;  /* temperature sensor */
    int32_t fid; /* frequency control */
    int32_t vid; /* voltage control */
    int32_t ttp; /* thermal trip */
    int32_t htc; /* hardware thermal control */
    int32_t stc; /* software thermal control */
    /* Leaf 0x80000008 */
    uint32_t physical_bits;
    uint32_t linear_bits;
    uint32_t cores_minus_one; /* logical processors of the package, less one */
    uint32_t apic_core_bits;  /* width of the APIC identifier below the package, or 0 */
    /* Leaf 0x8000000A */
    uint32_t svm_revision;
    uint32_t svm_asids;
} kestu_cpu_amd_t;

/* What only Intel's leaves tell. */
typedef struct kestu_cpu_intel_t {
    int32_t lm;         /* 64-bit capable */
    int32_t leaf_b;     /* leaf 0xB is available */
    int32_t restricted; /* the firmware hides leaves */
    /* Sharing masks of four levels of caches, for processors that describe none by leaf 4. */
    uint32_t cache_mask[4];
    uint32_t cache_mask_width[4];
} kestu_cpu_intel_t;

/* Identification: what kestu_cpu_intel_func and kestu_cpu_amd_func read on one processor. */
typedef struct kestu_cpu_id_t {
    uint32_t highest_leaf;
    uint32_t highest_extended_leaf;
    uint32_t stepping; /* bits 0-3 of the signature */
    uint32_t model;    /* 4-7 */
    uint32_t family;   /* 8-11 */
    uint32_t type;     /* 12-13 */
    uint32_t extended_model;
    uint32_t extended_family;
    uint32_t signature;      /* the whole of leaf 1 EAX */
    uint32_t display_family; /* family + extended family */
    uint32_t display_model;  /* model + extended model * 16 */
    uint32_t brand_index;
    uint32_t logical_processors; /* identifiers that a package takes up, when flags.htt is set */
    uint32_t initial_apic_id;
    kestu_cpu_flags_t flags;
    kestu_cpu_split_t split;
    kestu_cpu_amd_t amd;
    kestu_cpu_intel_t intel;
} kestu_cpu_id_t;

/* One kind of cache. */
typedef struct kestu_cpu_cache_t {
    uint32_t level;
    uint32_t type;
    uint32_t size_kb;
    uint32_t line; /* bytes */
    uint32_t ways;
    uint32_t partitions;
    uint32_t sets;
    uint32_t shared_by; /* how many logical processors may share one at most */
    uint32_t sharing_mask;
    uint32_t sharing_width;
    uint32_t count;        /* how many of this kind there are */
    char label[64];        /* "L1d" */
    char description[256]; /* "Level 1 Data cache, size(KBytes)= 32" */
} kestu_cpu_cache_t;

/* One logical processor. */
typedef struct kestu_cpu_processor_t {
    uint32_t index;   /* as the operating system counts */
    uint32_t apic_id; /* the x2APIC identifier where there is one */
    uint32_t package; /* the fields of the identifier, moved down to bit 0 */
    uint32_t core;
    uint32_t thread;
    /* Processors with the same value share a cache; parallel to the record's caches. */
    uint32_t cache[KESTU_CPU_MAX_CACHES];
    double mhz; /* measured rate of the time-stamp counter, 0.0 when not measured */
} kestu_cpu_processor_t;

typedef struct kestu_cpu_core_t {
    uint32_t package; /* identifiers, as in kestu_cpu_processor_t */
    uint32_t core;
    uint32_t thread_count;
} kestu_cpu_core_t;

typedef struct kestu_cpu_package_t {
    uint32_t package;
    uint32_t core_count;
    uint32_t thread_count;
} kestu_cpu_package_t;

/*
 * The record. Texts are always terminated; names are as the processor gives them, blanks in front
 * included. Intel's and AMD's processors fill everything, others the vendor and name alone.
 */
typedef struct kestu_cpu_t {
    uint32_t vendor;
    char vendor_name[80];
    char vendor_id[80]; /* the 12 characters that leaf 0 gives */
    char name[80];      /* left as it was when the processor has no name */

    kestu_cpu_id_t id; /* of the first processor */

    /* The caller's request: set `measure` to have the clock rate of one processor measured, or of
     * every one with a `measure_processor` of -1. Each takes 20 to 100 ms. */
    int32_t measure;
    int32_t measure_processor;

    uint32_t package_count;
    uint32_t core_count;
    uint32_t thread_count; /* logical processors */
    uint32_t cache_count;
    kestu_cpu_cache_t caches[KESTU_CPU_MAX_CACHES];
    kestu_cpu_package_t packages[KESTU_CPU_MAX_PROCESSORS];
    kestu_cpu_core_t cores[KESTU_CPU_MAX_PROCESSORS];
    kestu_cpu_processor_t processors[KESTU_CPU_MAX_PROCESSORS];

    int32_t os_sse; /* the operating system supports SSE */

    uint32_t reserved[127]; /* room for later fields */
} kestu_cpu_t;

/* An affinity mask: processor n is bit n mod 8 of byte n / 8. The bytes are the user's. */
typedef struct kestu_cpu_genaffinity {
    uint32_t size; /* bytes */
    uint8_t *bits;
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
 * runs on, by AMD's and by Intel's rules. The first always returns 0. The errors of the second are
 * 120171 when leaf 0xB tells no thread level and 120172 when the firmware hides the leaves that
 * tell the cores, under "Error in Intel CPUID processing."; the identification and the name are
 * then filled, the caches are none.
 * Sources: AMD64 Architecture Programmer's Manual, volume 3, appendix E; Intel 64 and IA-32
 * Architectures Software Developer's Manual, volume 2A, CPUID, and volume 3A, 9.9.
 */
KESTU_API int kestu_cpu_amd_func(kestu_cpu_t *record);
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_intel_func(kestu_cpu_t *record);

/*
 * As above for every processor in turn, with the counts and places of packages, cores, threads and
 * caches, and the clock rates that `record` asks for. Scratch memory comes from `pool`. The thread
 * stays bound to the last processor visited. Errors: those of the functions above, of
 * kestu_cpu_set_chk_process_affinity_consistency and of kestu_cpu_bind_context_to_logcpu; 120175
 * "AMD CPU topology detection error %d." or "Intel CPU topology detection error %d." when the
 * processors contradict each other; APR's when no memory is left.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_amd_topology(kestu_cpu_t *record,
                                                               apr_pool_t *pool);
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_intel_topology(kestu_cpu_t *record,
                                                                 apr_pool_t *pool);

/*
 * Fills `record`: for Intel's and AMD's processors as the functions above, for others the vendor
 * and the name. Scratch memory comes from a child of `pool` that lives only during the call. The
 * affinity of the calling thread is as before in every outcome. Errors stand under "Can't determine
 * CPU.": 120173 with the system's text when the affinity cannot be read or restored, or when the
 * process may not run on all processors (the record then holds the vendor alone), 120170 without
 * cpuid, and those of the functions above.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_detect(kestu_cpu_t *record, apr_pool_t *pool);

/*
 * Fills `record` as kestu_cpu_detect, but visits the processors of `processors` alone, or with null
 * those that the calling thread may run on: a container's, or those that taskset has left. Those
 * that the thread cannot be bound to are left out; `processors` of the record tells which were
 * visited. Scratch memory comes from a child of `pool`. Fails as kestu_cpu_detect, with 120174 when
 * none could be visited.
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
 * Adds processor `cpu` to `mask`, toggles it, or stores through `result` 1 when it is there and
 * else 0. The second removes only a processor that is there: one that is not is added. Error
 * 120173 "Can't set cpu %u bit (mask supports only up to %u cpus)." ("clear", "test"), with nothing
 * changed, for a processor beyond the mask.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *intel_cpuid_set_genaffinity_bit(kestu_cpu_genaffinity *mask,
                                                                        uint32_t cpu);
KESTU_API KESTU_MUST_USE kestu_error_t *
intel_cpuid_clear_genaffinity_bit(kestu_cpu_genaffinity *mask, uint32_t cpu);
KESTU_API KESTU_MUST_USE kestu_error_t *
cpuid_test_genaffinity_bit(const kestu_cpu_genaffinity *mask, uint32_t cpu, int *result);

/*
 * 0 when `a` and `b` hold the same processors, whatever their sizes, and 1 when they differ. A mask
 * of size 0 differs from every other, an empty one included.
 */
KESTU_API int intel_cpuid_cmp_equal_genaffinity(const kestu_cpu_genaffinity *a,
                                                const kestu_cpu_genaffinity *b);

/*
 * Binds the calling thread to logical processor `cpu`. Error 120174 with the system's text under
 * "Failed to bind context to a logical processor."; the thread's affinity is then as before.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cpu_bind_context_to_logcpu(uint32_t cpu);

/*
 * Adds processors 0 to `count` - 1 to `mask`, after checking for each that the process may run on
 * it. At the first where it may not, 120173 with the text of errno; at the end of the mask, the
 * error of intel_cpuid_set_genaffinity_bit. Those before it are then added. A count of 0 does
 * nothing.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_cpu_set_chk_process_affinity_consistency(kestu_cpu_genaffinity *mask, uint32_t count);

KESTU_END_DECLS

#endif
