// The line editor apart from the terminal: the bytes of keys, what keys do to the line, the
// history.
#include "console/key.hpp"
#include "fuzz/editor_model.hpp"
#include "support/test.hpp"

#include <optional>

using namespace kestu;
using namespace kestu::test;
using fuzz::Next;

namespace {

constexpr size_t megabyte = 1 << 20;

class EditorCore : public testing::Test {
  protected:
    EditorCore() {
        EXPECT_OK(kestu_ri_readline_init(&ctx, nullptr, 0, kestu_pool));
        begin();
    }
    ~EditorCore() override { kestu_ri_readline_terminate(ctx); }

    void begin() {
        editor.emplace(*ctx);
        EXPECT_OK(editor->begin());
    }

    void press(int key, int times = 1) {
        while (times-- > 0)
            ASSERT_EQ(editor->feed(key).next, Next::redraw);
    }

    void type(const std::string &text) {
        for (const char c : text)
            press(static_cast<unsigned char>(c));
    }

    void remember(const std::string &text) {
        EXPECT_OK(kestu_ri_readline_addhist(text.c_str(), ctx));
    }

    kestu_ri_t *ctx = nullptr;
    std::optional<Editor> editor;
};

} // namespace

TEST(Keys, BytesBecomeKeys) {
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        EXPECT_EQ(decode_key({&c, 1}), byte);
    }
    const std::pair<std::string_view, int> sequences[] = {
        {"\x1b[A", KESTU_KEY_UP},           {"\x1b[B", KESTU_KEY_DOWN},
        {"\x1b[C", KESTU_KEY_RIGHT},        {"\x1b[D", KESTU_KEY_LEFT},
        {"\x1bOF", KESTU_KEY_END},          {"\x1bOH", KESTU_KEY_HOME},
        {"\x1b[3~", KESTU_KEY_DELETE},      {"\x1b[3^", KESTU_KEY_DELETE},
        {"", KESTU_KEY_UNREADABLE},         {"ab", KESTU_KEY_UNREADABLE},
        {"\x1b[", KESTU_KEY_UNREADABLE},    {"\x1b[3", KESTU_KEY_UNREADABLE},
        {"\x1b[3~~", KESTU_KEY_UNREADABLE}, {"\x1b[E", KESTU_KEY_UNREADABLE},
        {"\x1bOA", KESTU_KEY_UNREADABLE},   {"\x1b[AA", KESTU_KEY_UNREADABLE},
        {"[A", KESTU_KEY_UNREADABLE},
    };
    for (const auto &[bytes, key] : sequences)
        EXPECT_EQ(decode_key(bytes), key) << testing::PrintToString(bytes);
}

TEST(Editor, AnyKeysDoWhatTheyDoInAPlainEditor) {
    constexpr int keys[] = {KESTU_KEY_UNREADABLE,
                            1,
                            3,
                            4,
                            5,
                            8,
                            10,
                            11,
                            12,
                            13,
                            14,
                            16,
                            127,
                            'b',
                            '\t',
                            0xE9,
                            KESTU_KEY_UP,
                            KESTU_KEY_DOWN,
                            KESTU_KEY_LEFT,
                            KESTU_KEY_RIGHT,
                            KESTU_KEY_HOME,
                            KESTU_KEY_END,
                            KESTU_KEY_DELETE};
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        fuzz::TwoEditors editors;
        // Some lines grow so that their buffer has to.
        const unsigned letters = round % 3 ? 2 : 20;
        for (int i = 0; i < 300; ++i)
            editors.press(random() % letters ? 'a' + i % 26 : keys[random() % std::size(keys)]);
    }
}

TEST_F(EditorCore, LinesOfAMegabyteAreHeldWhole) {
    for (size_t i = 0; i < megabyte; ++i)
        ASSERT_EQ(editor->feed('a').next, Next::redraw);
    EXPECT_LT(ctx->size, 3 * megabyte);
    EXPECT_EQ(editor->feed('\r').next, Next::finish);
    begin();
    press(KESTU_KEY_UP);
    press('!');
    EXPECT_TRUE(ctx->line == std::string(megabyte, 'a') + "!");
}

TEST_F(EditorCore, BrowsingBackAndForthTakesNoMoreMemory) {
    remember(std::string(megabyte, 'h'));
    remember("");
    press(KESTU_KEY_UP, 2);
    const char *line = ctx->line;
    for (int i = 0; i < 100; ++i) {
        press(KESTU_KEY_DOWN, 2);
        press(KESTU_KEY_UP, 2);
    }
    EXPECT_EQ(ctx->line, line);
}

// Outside of a line, too, the functions of the history and the buffer are harmless.
TEST_F(EditorCore, TheHistoryCanBeWalkedBeforeAnyLine) {
    kestu_ri_t *other = nullptr;
    ASSERT_OK(kestu_ri_readline_init(&other, "p", 1, kestu_pool));
    EXPECT_EQ(kestu_ri_readline_hist(other, KESTU_RI_OLDER), 0);
    EXPECT_EQ(kestu_ri_readline_hist(other, KESTU_RI_NEWER), 1);
    EXPECT_STREQ(other->line, "");
    EXPECT_EQ(kestu_ri_readline_hist(other, KESTU_RI_NEWER), 0);
    EXPECT_OK(kestu_ri_readline_addhist("entry", other));
    EXPECT_EQ(kestu_ri_readline_hist(other, KESTU_RI_OLDER), 1);
    EXPECT_STREQ(other->line, "entry");
    kestu_ri_readline_growbuffer(other, 3);
    EXPECT_STREQ(other->line, "en");
    EXPECT_EQ(other->size, 3u);
    kestu_ri_readline_growbuffer(other, 0);
    EXPECT_STREQ(other->line, "");
    kestu_ri_readline_growbuffer(other, 8);
    for (size_t i = 0; i < 8; ++i)
        EXPECT_EQ(other->line[i], '\0');
    kestu_ri_readline_terminate(other);
    kestu_ri_readline_terminate(nullptr);
}

namespace {

// A context whose memory is its own, so that every block it needs is asked of the system.
class EditorWithoutMemory : public EditorCore {
  protected:
    EditorWithoutMemory() {
        kestu_ri_readline_terminate(ctx);
        apr_allocator_create(&allocator);
        apr_pool_create_ex(&pool, nullptr, nullptr, allocator);
        EXPECT_OK(kestu_ri_readline_init(&ctx, nullptr, 0, pool));
        begin();
    }
    ~EditorWithoutMemory() override {
        kestu_ri_readline_terminate(std::exchange(ctx, nullptr));
        apr_pool_destroy(pool);
        apr_allocator_destroy(allocator);
    }

    apr_allocator_t *allocator = nullptr;
    apr_pool_t *pool = nullptr;
};

const std::string long_text(100000, 'h');

} // namespace

TEST_F(EditorWithoutMemory, AKeyThatFindsNoRoomStopsTheLine) {
    Effect effect;
    kestu_error_clear(kestu_error_create(0, 0, nullptr, "leaves a block for the next error"));
    {
        AllocFailure failure(1, all_after | pools_too);
        while (effect.next == Next::redraw)
            effect = editor->feed('a');
    }
    EXPECT_EQ(effect.next, Next::stop);
    EXPECT_EQ(ctx->line, std::string(ctx->size - 1, 'a'));
    EXPECT_CHAIN(effect.error, 120012,
                 "Failed to allocate " + std::to_string(2 * ctx->size) + " bytes of memory.");
    press('b');
}

TEST_F(EditorWithoutMemory, AnEntryThatFindsNoRoomIsNotShown) {
    remember(long_text);
    type("typed");
    {
        AllocFailure failure(1, pools_too);
        press(KESTU_KEY_UP);
    }
    EXPECT_STREQ(ctx->line, "typed");
    EXPECT_EQ(ctx->hist_index, -1);
    press(KESTU_KEY_UP);
    EXPECT_EQ(ctx->line, long_text);
}

TEST_F(EditorWithoutMemory, ALineThatCannotBeRememberedFails) {
    type(long_text);
    const auto enter = [&] {
        AllocFailure failure(1, pools_too);
        return editor->feed('\r');
    };
    const Effect effect = enter();
    EXPECT_EQ(effect.next, Next::fail);
    EXPECT_EQ(take_chain(effect.error).front(),
              Element(120012, "Readline: can't add string to history."));
    EXPECT_EQ(ctx->hist_count, 0);
    EXPECT_EQ(ctx->line, long_text);
}

TEST(EditorStart, FailsWhole) {
    const std::string prompt(1 << 26, 'p'); // more than pools keep for later
    { Pool room_for_the_small_ones; }
    kestu_ri_t *ctx = nullptr;
    const auto init = [&] {
        AllocFailure failure(1, pools_too);
        return kestu_ri_readline_init(&ctx, prompt.c_str(), 0, kestu_pool);
    };
    EXPECT_CHAIN(init(), 120012, "Can't initialize readline.",
                 "Failed to allocate 67108865 bytes of memory.");
    EXPECT_EQ(ctx, nullptr);
}
