// Chains as bytes, beside tpl itself.
#include "support/test.hpp"

#include <memory>
#include <sstream>

#include <tpl.h>

using namespace kestu::test;

namespace {

kestu_error_t *sample_chain() {
    kestu_error_t *err = kestu_error_create_i(3, 120030, 12, "a.c", "open", nullptr, "root");
    err = kestu_error_create_i(-1, -2, -3, nullptr, "", err, nullptr);
    return kestu_error_create_i(0, 0, 0, "b.c", nullptr, err, "");
}

std::string serialized(const kestu_error_t *err) {
    void *image = &image;
    size_t size = 77;
    kestu_error_serialize(err, &image, &size);
    std::string bytes(static_cast<const char *>(image), size);
    free(image);
    return bytes;
}

// The bytes stand in a block of their own, so that reading beyond them does not go unseen.
kestu_error_t *deserialized(const std::string &bytes) {
    const auto block = std::make_unique<char[]>(bytes.size());
    std::memcpy(block.get(), bytes.data(), bytes.size());
    kestu_error_t *err = KestuDLlistStopWalking;
    kestu_error_deserialize(&err, block.get(), bytes.size());
    return err;
}

// Everything that an element carries, as text.
std::string described(const kestu_error_t *err) {
    std::ostringstream out;
    const auto quoted = [](const char *s) {
        std::ostringstream text;
        s ? text << '\'' << s << '\'' : text << "null";
        return text.str();
    };
    for (; err; err = err->child)
        out << err->type << ' ' << err->code << ' ' << quoted(err->message) << ' '
            << quoted(err->file) << ' ' << err->line << ' ' << quoted(err->function) << '\n';
    return out.str();
}

constexpr const char *sample_text = "0 0 '' 'b.c' 0 null\n"
                                    "-1 -2 null null -3 ''\n"
                                    "3 120030 'root' 'a.c' 12 'open'\n";

struct Fields {
    int type = 0, code = 0, line = 0;
    char *message = nullptr, *file = nullptr, *function = nullptr;
    tpl_node *map() {
        char text[] = "A(iissis)";
        return tpl_map(text, &type, &code, &message, &file, &line, &function);
    }
};

} // namespace

TEST(ErrorImages, AChainComesBackAsItWas) {
    kestu_error_t *err = sample_chain();
    kestu_error_t *copy = deserialized(serialized(err));
    EXPECT_EQ(described(copy), sample_text);
    EXPECT_EQ(kestu_error_crc16(copy), kestu_error_crc16(err));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->pool, kestu_error_root_cause(copy)->pool);
    EXPECT_NE(copy->pool, err->pool);
    kestu_error_clear(copy);
    kestu_error_clear(err);
    EXPECT_EQ(deserialized(serialized(nullptr)), nullptr);
}

TEST(ErrorImages, OthersReadThemWithTheMap) {
    kestu_error_t *err = sample_chain();
    const std::string image = serialized(err);
    kestu_error_clear(err);
    Fields fields;
    tpl_node *node = fields.map();
    ASSERT_EQ(tpl_load(node, TPL_MEM, image.data(), image.size()), 0);
    EXPECT_EQ(tpl_Alen(node, 1), 3);
    ASSERT_GT(tpl_unpack(node, 1), 0);
    EXPECT_EQ(fields.type, 3);
    EXPECT_EQ(fields.code, 120030);
    EXPECT_STREQ(fields.message, "root");
    EXPECT_STREQ(fields.file, "a.c");
    EXPECT_EQ(fields.line, 12);
    EXPECT_STREQ(fields.function, "open");
    for (char *text : {fields.message, fields.file, fields.function})
        free(text);
    tpl_free(node);
}

TEST(ErrorImages, BytesThatAreNoImageYieldNullAndPrintNothing) {
    kestu_error_t *err = sample_chain();
    const std::string image = serialized(err);
    kestu_error_clear(err);
    const long before = live_blocks();
    testing::internal::CaptureStderr();
    for (size_t size = 0; size < image.size(); ++size)
        EXPECT_EQ(deserialized(image.substr(0, size)), nullptr) << size;
    EXPECT_EQ(deserialized(image + '\0'), nullptr);
    EXPECT_EQ(deserialized(std::string(100, '\0')), nullptr);
    err = KestuDLlistStopWalking;
    kestu_error_deserialize(&err, nullptr, 0);
    EXPECT_EQ(err, nullptr);

    constexpr size_t header_size = 4 + 4 + 10 + 4;
    for (size_t i = 0; i < image.size(); ++i)
        for (int bit = 0; bit < 8; ++bit) {
            std::string changed = image;
            changed[i] = static_cast<char>(changed[i] ^ 1 << bit);
            err = deserialized(changed);
            EXPECT_TRUE(!err || i >= header_size) << i;
            kestu_error_clear(err);
        }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(live_blocks(), before);
}

// The size in the header is made to fit, so that only the records are at fault.
TEST(ErrorImages, RecordsThatDoNotFitYieldNull) {
    const auto image_of = [](const std::string &records) {
        std::string image("tpl\2----A(iissis)\0", 18);
        image += records;
        const uint32_t size = static_cast<uint32_t>(image.size());
        std::memcpy(image.data() + 4, &size, sizeof size);
        return image;
    };
    const std::string numbers(8, '\0'), null(4, '\0'), number = null;
    const std::string one("\1\0\0\0", 4), most("\xff\xff\xff\xff", 4);
    const std::string record = numbers + null + null + number + null;
    const auto text = [](const std::string &bytes) {
        const uint32_t size = static_cast<uint32_t>(bytes.size() + 1);
        return std::string(reinterpret_cast<const char *>(&size), 4) + bytes;
    };
    kestu_error_t *err = deserialized(image_of(one + numbers + text("m") + null + number + null));
    EXPECT_EQ(described(err), "0 0 'm' null 0 null\n");
    kestu_error_clear(err);
    for (const std::string &records :
         {std::string(), one, most, most + record, one + record + record, null + record,
          one + record.substr(1), one + numbers + most + null + number + null,
          one + numbers + null + null + number + text("x").substr(0, 4),
          one + numbers + text(std::string("a\0b", 3)) + null + number + null})
        EXPECT_EQ(deserialized(image_of(records)), nullptr);
    EXPECT_EQ(deserialized(image_of(null)), nullptr);
}

TEST(ErrorImages, ChainsOfAnyDepthNeedNoStack) {
    kestu_error_t *err = kestu_error_create_i(0, 1, 0, nullptr, nullptr, nullptr, "root");
    for (int i = 0; i < 300000; ++i)
        err = kestu_error_create_i(0, 1, i, nullptr, nullptr, err, nullptr);
    kestu_error_t *copy = deserialized(serialized(err));
    EXPECT_EQ(kestu_error_crc16(copy), kestu_error_crc16(err));
    EXPECT_EQ(copy->line, 299999);
    kestu_error_clear(copy);
    kestu_error_clear(err);
}

TEST(ErrorImages, WithoutMemoryThereIsNoImage) {
    kestu_error_t *err = sample_chain();
    void *image = &image;
    size_t size = 77;
    {
        AllocFailure failure(1);
        kestu_error_serialize(err, &image, &size);
    }
    EXPECT_EQ(image, nullptr);
    EXPECT_EQ(size, 0u);
    kestu_error_clear(err);
}

TEST(ErrorChecksum, CoversEverythingButDataFromTheHeadDown) {
    EXPECT_EQ(kestu_error_crc16(nullptr), 0);
    kestu_error_t *err = kestu_error_create_i(1, 2, 3, "a", "b", nullptr, "");
    err = kestu_error_create_i(0x34333231, 0x38373635, 0x39, nullptr, "f", err, "text");
    const std::string_view bytes("12345678"
                                 "9\0\0\0textf\1\0\0\0\2\0\0\0\3\0\0\0ab",
                                 12 + 5 + 12 + 2);
    uint32_t crc = 0; // CRC-16/ARC bit by bit
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
    }
    EXPECT_EQ(kestu_error_crc16(err), static_cast<int>(crc));
    kestu_error_set_data(err, &crc);
    EXPECT_EQ(kestu_error_crc16(err), static_cast<int>(crc));
    kestu_error_clear(err);
}
