// Chains as bytes. tpl prints what it does not like and trusts what it reads, so an image is
// checked from the first byte to the last before tpl sees it.
#include "kestu_error_image.h"

#include "base/kept_errno.hpp"
#include "kestu_error.h"
#include "kestu_sum.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include <tpl.h>

using namespace kestu;

namespace {

// One record an element: an i is a 32-bit number, an s a text or null.
constexpr std::string_view map_text("A(iissis)");
constexpr std::string_view record_fields("iissis");

// Where tpl takes the fields of a record from, and puts them.
struct Record {
    int type = 0;
    int code = 0;
    char *message = nullptr;
    char *file = nullptr;
    int line = 0;
    char *function = nullptr;
};

tpl_node *map_record(Record &record) {
    return tpl_map(const_cast<char *>(map_text.data()), &record.type, &record.code, &record.message,
                   &record.file, &record.line, &record.function);
}

// Packs the elements from the last to the first; `count` of them follow `err`.
void pack_reversed(tpl_node *node, Record &record, const kestu_error_t *const *elements,
                   size_t count) {
    while (count-- > 0) {
        const kestu_error_t &element = *elements[count];
        record = {.type = element.type,
                  .code = element.code,
                  .message = const_cast<char *>(element.message),
                  .file = const_cast<char *>(element.file),
                  .line = element.line,
                  .function = const_cast<char *>(element.function)};
        tpl_pack(node, 1);
    }
}

// The elements of a chain in an array, so that the last one can be packed first. Null without
// memory.
const kestu_error_t **list_elements(const kestu_error_t *err, size_t &count) {
    count = 0;
    for (const kestu_error_t *e = err; e; e = e->child)
        ++count;
    auto **list = static_cast<const kestu_error_t **>(std::malloc((count + 1) * sizeof(void *)));
    if (list)
        for (const kestu_error_t **next = list; err; err = err->child)
            *next++ = err;
    return list;
}

// Reads an image without believing it.
class Reader {
  public:
    explicit Reader(std::string_view image) : rest_(image) {}

    bool literal(std::string_view expected) {
        const bool found = rest_.starts_with(expected);
        if (found)
            rest_.remove_prefix(expected.size());
        return found;
    }

    bool number(uint32_t &value) {
        if (rest_.size() < sizeof value)
            return false;
        std::memcpy(&value, rest_.data(), sizeof value);
        rest_.remove_prefix(sizeof value);
        return true;
    }

    // A text stands behind its length plus 1, and 0 is null.
    bool text() {
        uint32_t size = 0;
        if (!number(size))
            return false;
        const size_t length = size > 0 ? size - 1 : 0;
        if (length > rest_.size() || rest_.substr(0, length).find('\0') != rest_.npos)
            return false;
        rest_.remove_prefix(length);
        return true;
    }

    bool record() {
        uint32_t value = 0;
        for (const char field : record_fields)
            if (!(field == 'i' ? number(value) : text()))
                return false;
        return true;
    }

    bool at_end() const { return rest_.empty(); }

  private:
    std::string_view rest_;
};

// The mark of tpl, flags of 2 for texts that may be null, the size of the whole image, the map with
// its terminator, the number of records, the records.
bool is_image(std::string_view image) {
    Reader reader(image);
    uint32_t size = 0;
    uint32_t count = 0;
    if (!reader.literal("tpl\2") || !reader.number(size) || size != image.size() ||
        !reader.literal({map_text.data(), map_text.size() + 1}) || !reader.number(count))
        return false;
    for (; count > 0; --count)
        if (!reader.record())
            return false;
    return reader.at_end();
}

// Makes an error of a record above `child`, and releases the texts that tpl allocated.
kestu_error_t *take_record(Record &record, kestu_error_t *child) {
    kestu_error_t *err = kestu_error_create_i(record.type, record.code, record.line, record.file,
                                              record.function, child, record.message);
    std::free(record.message);
    std::free(record.file);
    std::free(record.function);
    record = {};
    return err;
}

kestu_error_t *unpack(const void *image, size_t size) {
    Record record;
    tpl_node *node = map_record(record);
    kestu_error_t *chain = nullptr;
    if (tpl_load(node, TPL_MEM, image, size) == 0)
        while (tpl_unpack(node, 1) > 0)
            chain = take_record(record, chain);
    tpl_free(node);
    return chain;
}

} // namespace

void kestu_error_serialize(const kestu_error_t *err, void **image, size_t *size) {
    *image = nullptr;
    *size = 0;
    const KeptErrno kept;
    size_t count = 0;
    const kestu_error_t **elements = list_elements(err, count);
    if (!elements)
        return;
    Record record;
    tpl_node *node = map_record(record);
    pack_reversed(node, record, elements, count);
    tpl_dump(node, TPL_MEM, image, size);
    tpl_free(node);
    std::free(elements);
}

void kestu_error_deserialize(kestu_error_t **err, const void *image, size_t size) {
    const KeptErrno kept;
    const bool usable = image && is_image({static_cast<const char *>(image), size});
    *err = usable ? unpack(image, size) : nullptr;
}

int kestu_error_crc16(const kestu_error_t *err) {
    uint16_t crc = 0;
    const auto feed = [&crc](const void *bytes, size_t size) {
        crc = kestu_util_crc16(crc, static_cast<const unsigned char *>(bytes), size);
    };
    for (; err; err = err->child) {
        for (const int32_t *number : {&err->type, &err->code, &err->line})
            feed(number, sizeof *number);
        for (const char *text : {err->message, err->file, err->function})
            if (text)
                feed(text, std::strlen(text));
    }
    return crc;
}
