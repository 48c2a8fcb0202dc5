/*
 * The library's own error codes: a name, a number and a text each.
 *
 *     if (err && err->code == KESTU_ERR_NOT_TIFF)
 *         fprintf(stderr, "%s\n", kestu_error_text(err->code));      // Not TIFF image.
 *
 * KESTU_ERROR_CODES(X) is the list itself: X(name, code, text) once for every code, in ascending
 * order, from which a program can make tables of its own. Codes from KESTU_ERROR_FIRST_REGISTERED
 * up are handed out by kestu_error_register. All of this is constant.
 */
#ifndef KESTU_ERROR_CODES_H
#define KESTU_ERROR_CODES_H

/*
 * The list: `X`(name, code, text) for every code. The texts are an interface: programs compare them,
 * so their slips stay as they are.
 */
/* clang-format off */
#define KESTU_ERROR_CODES(X) \
    X(KESTU_ERR_WARNING, 1, "Warning") \
    X(KESTU_ERR_NOT_INITIALIZED, 120001, "KESTU has not been initialized.") \
    X(KESTU_ERR_ELEMENT_COUNT, 120010, "Incorrect number of elements") \
    X(KESTU_ERR_ELEMENT_SIZE, 120011, "Incorrect element size") \
    X(KESTU_ERR_NO_MEMORY, 120012, "Failed to allocate memory") \
    X(KESTU_ERR_NO_MEMORY_TO_RESIZE, 120013, "Failed to allocate memory") \
    X(KESTU_ERR_MEMORY_SIZE, 120014, "Incorrect memory size") \
    X(KESTU_ERR_ASSERTION, 120020, "Assertion failure") \
    X(KESTU_ERR_OPEN, 120030, "IO stream cannot be opened.") \
    X(KESTU_ERR_READ, 120031, "Cannot read IO stream.") \
    X(KESTU_ERR_WRITE, 120032, "Cannot write to IO stream.") \
    X(KESTU_ERR_SEEK, 120033, "Cannot seek IO stream.") \
    X(KESTU_ERR_NOT_OPEN, 120034, "The IO stream is not opened.") \
    X(KESTU_ERR_UNKNOWN_URI, 120035, "Unknown URI.") \
    X(KESTU_ERR_END_OF_FILE, 120036, "End of file found.") \
    X(KESTU_ERR_NOT_IMPLEMENTED, 120037, "The call is not implemented of applicable for such IO type.") \
    X(KESTU_ERR_STREAM_NOT_INITIALIZED, 120038, "The IO stream is not initialized.") \
    X(KESTU_ERR_LIST_INSERTION, 120051, "DL insertion error: invalid pointer.") \
    X(KESTU_ERR_LIST_EXCHANGE, 120052, "DL exchange error: invalid pointer.") \
    X(KESTU_ERR_LIST_UPDATE_SIZE, 120053, "Incorrect size of updated DL object.") \
    X(KESTU_ERR_SEPARATOR_COUNT, 120060, "Error in strtok: incorrect number of separators.") \
    X(KESTU_ERR_NO_TOKEN_DATA, 120061, "Error in strtok: there are no data.") \
    X(KESTU_ERR_INTEGER_TEXT, 120062, "Error converting string to integer.") \
    X(KESTU_ERR_DOUBLE_TEXT, 120063, "Error converting string to double.") \
    X(KESTU_ERR_NO_HEX_DIGITS, 120064, "No characters matched when scanning Hex number.") \
    X(KESTU_ERR_HEX_TOO_BIG, 120065, "Hex number is too big.") \
    X(KESTU_ERR_BUFFER_TOO_SMALL, 120066, "Buffer is too small.") \
    X(KESTU_ERR_ASSERT_1, 120080, "Assert 1.") \
    X(KESTU_ERR_ASSERT_2, 120081, "Assert 2.") \
    X(KESTU_ERR_KEY_EXISTS, 120082, "Subtrie already exists.") \
    X(KESTU_ERR_DELETE_NULL_NODE, 120083, "Can't delete NULL node in trie.") \
    X(KESTU_ERR_KEY_MISMATCH, 120084, "Keys of leafs do not match.") \
    X(KESTU_ERR_NO_KEY, 120085, "No leaf with such key.") \
    X(KESTU_ERR_WRONG_KEY, 120086, "Wrong key of leaf.") \
    X(KESTU_ERR_LEAF_COUNT, 120087, "Wrong number of leafs.") \
    X(KESTU_ERR_DELETE_NODE_1, 120088, "Catastrophe in delete_node 1.") \
    X(KESTU_ERR_DELETE_NODE_2, 120089, "Catastrophe in delete_node 2.") \
    X(KESTU_ERR_DELETE_NODE_3, 120090, "Catastrophe in delete_node 3.") \
    X(KESTU_ERR_NODE_TYPE, 120091, "Incorrect node type in trie.") \
    X(KESTU_ERR_SIGNAL_NUMBER, 120100, "Invalid signal number.") \
    X(KESTU_ERR_TYPE_EXISTS, 120101, "The name(s) of type is(are) already registered.") \
    X(KESTU_ERR_CHILD_EXISTS, 120102, "There is already a child with such name.") \
    X(KESTU_ERR_SIGNAL_TYPE_EXISTS, 120103, "There is already registered signal with such name.") \
    X(KESTU_ERR_NO_SIGNAL, 120104, "Signal not found.") \
    X(KESTU_ERR_SIGNAL_EXISTS, 120105, "Signal already exists.") \
    X(KESTU_ERR_SIGNAL_BUSY, 120106, "Signal is busy.") \
    X(KESTU_ERR_SIGNAL_ACTION, 120107, "Unknown signal action.") \
    X(KESTU_ERR_TREE_INSERTION, 120120, "Tree insertion error: invalid pointer.") \
    X(KESTU_ERR_CONSOLE_SIZE, 120130, "Can't determine console dimensions.") \
    X(KESTU_ERR_NO_CHARACTER, 120131, "Can't read character.") \
    X(KESTU_ERR_CHARACTER_READ, 120132, "Error in character read.") \
    X(KESTU_ERR_HALTED_BY_USER, 120133, "Characters reading halted by user.") \
    X(KESTU_ERR_NO_MEMORY_FOR_NODE, 120140, "Can't allocate memory for sllist node.") \
    X(KESTU_ERR_NOT_TIFF, 120150, "Not TIFF image.") \
    X(KESTU_ERR_TIFF_TAG, 120151, "Invalid TIFF tag.") \
    X(KESTU_ERR_IMAGE_STRUCTURE, 120152, "Invalid image structure.") \
    X(KESTU_ERR_INCOMPLETE_DATA, 120153, "The data is not complete.") \
    X(KESTU_ERR_UNKNOWN_IMAGE_TYPE, 120154, "Image type is unknown.") \
    X(KESTU_ERR_NO_CPUID, 120170, "CPUID is not supported.") \
    X(KESTU_ERR_NO_THREAD_LEVEL, 120171, "Thread Level was not reported by Leaf 0xB") \
    X(KESTU_ERR_CPUID_RESTRICTED, 120172, "CPUID function is restricted (probably in BIOS)") \
    X(KESTU_ERR_AFFINITY, 120173, "Problem with affinity mask.") \
    X(KESTU_ERR_BIND, 120174, "Bind context failed.") \
    X(KESTU_ERR_TOPOLOGY, 120175, "Internal error in CPU topology detection.") \
    X(KESTU_ERR_UNKNOWN, 120180, "Unknown error.") \
    X(KESTU_ERR_BIT_ARRAY_SIZE, 120190, "Invalid size of bit array")
/* clang-format on */

#define KESTU_ERROR_CODE_CONSTANT(name, code, text) name = code,
/* The codes by name. */
enum kestu_error_code { KESTU_ERROR_CODES(KESTU_ERROR_CODE_CONSTANT) };
#undef KESTU_ERROR_CODE_CONSTANT

#endif
