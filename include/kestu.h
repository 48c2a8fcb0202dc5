/*
 * Everything: includes the headers of all families.
 */
#ifndef KESTU_H
#define KESTU_H

#include "kestu_array.h"
#include "kestu_bitarr.h"
#include "kestu_cdl.h"
#include "kestu_cpu.h"
#include "kestu_defs.h"
#include "kestu_dir.h"
#include "kestu_dl.h"
#include "kestu_error.h"
#include "kestu_error_codes.h"
#include "kestu_error_image.h"
#include "kestu_escape.h"
#include "kestu_format.h"
#include "kestu_img.h"
#include "kestu_img_measure.h"
#include "kestu_img_shape.h"
#include "kestu_lib.h"
#include "kestu_link.h"
#include "kestu_log.h"
#include "kestu_mach.h"
#include "kestu_map.h"
#include "kestu_mem.h"
#include "kestu_obj.h"
#include "kestu_objsig.h"
#include "kestu_prsd.h"
#include "kestu_readline.h"
#include "kestu_sl.h"
#include "kestu_stk.h"
#include "kestu_str.h"
#include "kestu_strlist.h"
#include "kestu_sum.h"
#include "kestu_tree.h"
#include "kestu_trie.h"
#include "kestu_uthash.h"
#include "kestu_util.h"
#include "kestu_version.h"
#include "kestu_walk.h"

#endif
