// The table of the library's own error codes.
#include "error/error.hpp"

#include <algorithm>
#include <iterator>

namespace kestu {
namespace {

struct CodeText {
    int code;
    const char *text;
};

// The texts are an interface: programs compare them, so their slips stay as they are.
constexpr CodeText code_texts[] = {
    {1, "Warning"},
    {120001, "KESTU has not been initialized."},
    {120010, "Incorrect number of elements"},
    {120011, "Incorrect element size"},
    {120012, "Failed to allocate memory"},
    {120013, "Failed to allocate memory"},
    {120014, "Incorrect memory size"},
    {120020, "Assertion failure"},
    {120030, "IO stream cannot be opened."},
    {120031, "Cannot read IO stream."},
    {120032, "Cannot write to IO stream."},
    {120033, "Cannot seek IO stream."},
    {120034, "The IO stream is not opened."},
    {120035, "Unknown URI."},
    {120036, "End of file found."},
    {120037, "The call is not implemented of applicable for such IO type."},
    {120038, "The IO stream is not initialized."},
    {120051, "DL insertion error: invalid pointer."},
    {120052, "DL exchange error: invalid pointer."},
    {120053, "Incorrect size of updated DL object."},
    {120060, "Error in strtok: incorrect number of separators."},
    {120061, "Error in strtok: there are no data."},
    {120062, "Error converting string to integer."},
    {120063, "Error converting string to double."},
    {120064, "No characters matched when scanning Hex number."},
    {120065, "Hex number is too big."},
    {120066, "Buffer is too small."},
    {120080, "Assert 1."},
    {120081, "Assert 2."},
    {120082, "Subtrie already exists."},
    {120083, "Can't delete NULL node in trie."},
    {120084, "Keys of leafs do not match."},
    {120085, "No leaf with such key."},
    {120086, "Wrong key of leaf."},
    {120087, "Wrong number of leafs."},
    {120088, "Catastrophe in delete_node 1."},
    {120089, "Catastrophe in delete_node 2."},
    {120090, "Catastrophe in delete_node 3."},
    {120091, "Incorrect node type in trie."},
    {120100, "Invalid signal number."},
    {120101, "The name(s) of type is(are) already registered."},
    {120102, "There is already a child with such name."},
    {120103, "There is already registered signal with such name."},
    {120104, "Signal not found."},
    {120105, "Signal already exists."},
    {120106, "Signal is busy."},
    {120107, "Unknown signal action."},
    {120120, "Tree insertion error: invalid pointer."},
    {120130, "Can't determine console dimensions."},
    {120131, "Can't read character."},
    {120132, "Error in character read."},
    {120133, "Characters reading halted by user."},
    {120140, "Can't allocate memory for sllist node."},
    {120150, "Not TIFF image."},
    {120151, "Invalid TIFF tag."},
    {120152, "Invalid image structure."},
    {120153, "The data is not complete."},
    {120154, "Image type is unknown."},
    {120170, "CPUID is not supported."},
    {120171, "Thread Level was not reported by Leaf 0xB"},
    {120172, "CPUID function is restricted (probably in BIOS)"},
    {120173, "Problem with affinity mask."},
    {120174, "Bind context failed."},
    {120175, "Internal error in CPU topology detection."},
    {120180, "Unknown error."},
    {120190, "Invalid size of bit array"},
};

constexpr bool ascending() {
    for (size_t i = 1; i < std::size(code_texts); ++i)
        if (code_texts[i - 1].code >= code_texts[i].code)
            return false;
    return true;
}
static_assert(ascending(), "codes are unique and in ascending order");

} // namespace

const char *code_text(int code) {
    const CodeText *entry =
        std::lower_bound(std::begin(code_texts), std::end(code_texts), code,
                         [](const CodeText &e, int wanted) { return e.code < wanted; });
    return entry != std::end(code_texts) && entry->code == code ? entry->text : nullptr;
}

} // namespace kestu
