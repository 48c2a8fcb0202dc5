// Making, combining, inspecting and releasing chains.
#include "support/test.hpp"

using namespace kestu::test;

namespace {

kestu_error_t *chain_of_three() {
    kestu_error_t *err = kestu_error_create_i(0, 120030, 7, "/src/a.c", "open", nullptr, "root");
    err = kestu_error_create_i(1, 2, 0, nullptr, nullptr, err, nullptr);
    return kestu_error_quick_wrap_i(9, "b.c", "load", err, "head");
}

} // namespace

TEST(ErrorMaking, MacrosGiveTheRealPlace) {
    kestu_error_t *err = kestu_error_createf(KESTU_ERROR_WARNING, 5, nullptr, "%d of %s", 3, "x");
    const int line = __LINE__ - 1;
    EXPECT_EQ(err->type, KESTU_ERROR_WARNING);
    EXPECT_EQ(err->code, 5);
    EXPECT_STREQ(err->message, "3 of x");
    EXPECT_STREQ(err->file, "error_test.cpp");
    EXPECT_EQ(err->line, line);
    EXPECT_STREQ(err->function, "TestBody");
    EXPECT_EQ(err->child, nullptr);
    EXPECT_EQ(err->data, nullptr);
    kestu_error_clear(err);
}

TEST(ErrorMaking, KeepsOnlyTheBaseNameOfTheFile) {
    const std::string long_name(5000, 'n');
    for (const auto &[path, name] : {std::pair<std::string, std::string>{"", "."},
                                     {"/a//b.c//", "b.c"},
                                     {"///", "/"},
                                     {"d/" + long_name, long_name.substr(0, 4095)}}) {
        kestu_error_t *err = kestu_error_create_i(0, 0, 1, path.c_str(), nullptr, nullptr, "m");
        EXPECT_EQ(err->file, name);
        kestu_error_clear(err);
    }
}

TEST(ErrorMaking, WrappingSharesThePoolAndKeepsKindAndCode) {
    kestu_error_t *root = kestu_error_create(KESTU_ERROR_ASSERT, 120012, nullptr, nullptr);
    kestu_error_t *head = kestu_error_quick_wrap(root, "Cannot go.");
    EXPECT_EQ(head->pool, root->pool);
    EXPECT_EQ(head->child, root);
    EXPECT_EQ(head->type, KESTU_ERROR_ASSERT);
    EXPECT_CHAIN(head, 120012, "Cannot go.", "");
}

TEST(ErrorMaking, AprStatusBecomesText) {
    EXPECT_CHAIN(kestu_error_aprwrap(APR_ENOENT), 0, "No such file or directory");
    EXPECT_CHAIN(kestu_error_aprwrapf(APR_ENOENT, "file %d", 4), 0,
                 "file 4: No such file or directory");
    const char *none = nullptr;
    EXPECT_THAT(take_lines(kestu_error_aprwrapf_i(APR_ENOENT, 0, nullptr, nullptr, none, 0)),
                ElementsAre("Error: Unknown KesTU error (code=0) "));
}

TEST(ErrorMaking, LongMessagesAreKeptWhole) {
    for (const size_t length : {510u, 511u, 512u, 513u, 100000u}) {
        const std::string text(length, 'x');
        EXPECT_CHAIN(kestu_error_createf(0, 1, nullptr, "%s", text.c_str()), 1, text);
        EXPECT_CHAIN(kestu_error_aprwrapf(APR_ENOENT, "%s", text.c_str()), 0,
                     text + ": No such file or directory");
    }
}

TEST(ErrorMaking, OfATextThatCannotBeFormattedTheBeginningIsKept) {
    const std::string text(2000, 'x');
    EXPECT_CHAIN(kestu_error_createf(0, 1, nullptr, "%s%f%s", text.c_str(), 1e20, "lost"), 1, text);
    EXPECT_CHAIN(kestu_error_aprwrapf(APR_ENOENT, "file %f", 1e20), 0,
                 "file : No such file or directory");
}

TEST(ErrorChains, NothingChangesTheSentinel) {
    kestu_error_t *err = kestu_error_quick_wrap(KestuDLlistStopWalking, "Stopped.");
    EXPECT_EQ(err->child, KestuDLlistStopWalking);
    kestu_error_set_type_all(err, KESTU_ERROR_PLAIN);
    kestu_error_compose(err, kestu_error_create(0, 5, nullptr, "cause"));
    EXPECT_EQ(err->type, KESTU_ERROR_PLAIN);
    EXPECT_CHAIN(err, Element(0, "Stopped."), Element(0, "KestuDLlistStopWalking"),
                 Element(5, "cause"));
    kestu_error_compose(KestuDLlistStopWalking, chain_of_three());
    kestu_error_clear(KestuDLlistStopWalking);
    EXPECT_THAT(take_lines(KestuDLlistStopWalking), ElementsAre("Error: KestuDLlistStopWalking "));
}

TEST(ErrorChains, ComposingWhatSharesElementsDoesNothing) {
    kestu_error_t *err = chain_of_three();
    for (kestu_error_t *other : {err, err->child, kestu_error_root_cause(err)}) {
        kestu_error_compose(err, other);
        kestu_error_compose(other, err);
    }
    EXPECT_CHAIN(err, Element(2, "head"), Element(2, ""), Element(120030, "root"));
}

TEST(ErrorChains, ComposingAppendsCopiesOfTheSecondChain) {
    kestu_error_t *a = kestu_error_create(0, 1, nullptr, "a");
    kestu_error_t *b = chain_of_three();
    int datum = 0;
    kestu_error_set_data(b, &datum);
    kestu_error_compose(a, b);
    kestu_error_t *copy = a->child;
    EXPECT_EQ(copy->pool, a->pool);
    EXPECT_EQ(copy->data, &datum);
    EXPECT_STREQ(copy->file, "b.c");
    EXPECT_STREQ(kestu_error_root_cause(a)->function, "open");
    EXPECT_CHAIN(a, Element(1, "a"), Element(2, "head"), Element(2, ""), Element(120030, "root"));
}

TEST(ErrorChains, ComposingWithNullKeepsTheOther) {
    EXPECT_EQ(kestu_error_compose_create(nullptr, nullptr), nullptr);
    kestu_error_t *a = chain_of_three();
    EXPECT_EQ(kestu_error_compose_create(a, nullptr), a);
    EXPECT_EQ(kestu_error_compose_create(nullptr, a), a);
    kestu_error_clear(a);
}

TEST(ErrorChains, CopiesAreIndependentButForPlaces) {
    EXPECT_EQ(kestu_error_dup(nullptr), nullptr);
    kestu_error_t *source = chain_of_three();
    kestu_error_t *copy = kestu_error_dup(source);
    EXPECT_NE(copy->pool, source->pool);
    EXPECT_NE(copy->message, source->message);
    EXPECT_EQ(copy->file, source->file);
    EXPECT_EQ(kestu_error_root_cause(copy)->function, kestu_error_root_cause(source)->function);
    kestu_error_clear(source);
    EXPECT_CHAIN(copy, Element(2, "head"), Element(2, ""), Element(120030, "root"));
}

TEST(ErrorChains, KindsAndDataBelongToElements) {
    kestu_error_t *err = chain_of_three();
    kestu_error_set_type(err, KESTU_ERROR_PLAIN);
    EXPECT_EQ(err->child->type, KESTU_ERROR_WARNING);
    kestu_error_set_type_all(err, 77);
    EXPECT_EQ(kestu_error_root_cause(err)->type, 77);
    int datum = 0;
    kestu_error_set_data(kestu_error_root_cause(err), &datum);
    EXPECT_EQ(kestu_error_get_data(err), nullptr);
    EXPECT_EQ(kestu_error_get_data_first(err), &datum);
    kestu_error_clear(err);
}

TEST(ErrorChains, WalkVisitsEveryElementWhateverTheCallbackSays) {
    kestu_error_t *err = chain_of_three();
    std::string seen;
    const auto visit = [](int code, const char *message, const char *file, int line,
                          const char *function, void *baton) {
        auto &text = *static_cast<std::string *>(baton);
        text += std::to_string(code) + (message ? message : "-") + (file ? file : "-") +
                std::to_string(line) + (function ? function : "-") + ";";
        return 1;
    };
    kestu_error_walk(err, visit, &seen);
    EXPECT_EQ(seen, "2headb.c9load;2--0-;120030roota.c7open;");
    kestu_error_clear(err);
}

TEST(ErrorChains, NullIsHarmlessWhereItIsAllowed) {
    kestu_error_walk(nullptr, nullptr, nullptr);
    kestu_error_clear(nullptr);
    kestu_error_set_type_all(nullptr, 1);
    kestu_error_set_data(nullptr, nullptr);
    EXPECT_EQ(kestu_error_get_data(nullptr), nullptr);
    EXPECT_EQ(kestu_error_get_data_first(nullptr), nullptr);
    EXPECT_EQ(kestu_error_root_cause(nullptr), nullptr);
}

namespace {

int malfunctions = 0;

kestu_error_t *count_malfunction(kestu_error_t *err) {
    ++malfunctions;
    return err;
}

} // namespace

// A message too large for what is left in the chain's pool needs a new block from the system.
TEST(ErrorMalfunction, NoMemoryForAnErrorGoesToTheHandlerAndStillYieldsAnError) {
    const std::string huge(1 << 20, 'h');
    kestu_error_t *cause = kestu_error_create(0, 3, nullptr, "cause");
    const auto previous = kestu_error_set_malfunction_handler(count_malfunction);
    EXPECT_EQ(kestu_error_get_malfunction_handler(), count_malfunction);
    malfunctions = 0;
    kestu_error_t *err = nullptr;
    {
        AllocFailure failure(1, all_after | pools_too);
        err = kestu_error_quick_wrap(cause, huge.c_str());
    }
    EXPECT_EQ(kestu_error_set_malfunction_handler(previous), count_malfunction);
    EXPECT_EQ(malfunctions, 1);
    EXPECT_THAT(take_lines(err), ElementsAre("Malfunction: Impossible to continue. Aborting... ",
                                             "Error: Cannot create error. ",
                                             StartsWith("Error: Cannot allocate memory")));
    kestu_error_compose(err, kestu_error_create(0, 4, nullptr, "released"));
    kestu_error_compose(cause, err);
    EXPECT_CHAIN(cause, Element(3, "cause"), Element(0, "Impossible to continue. Aborting..."),
                 Element(0, "Cannot create error."), testing::_);
}

TEST(ErrorMalfunction, NoMemoryForARegisteredTextGoesToTheHandler) {
    const std::string huge(1 << 20, 'h');
    const auto previous = kestu_error_set_malfunction_handler(count_malfunction);
    malfunctions = 0;
    int code = 0;
    {
        AllocFailure failure(1, all_after | pools_too);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(kestu_error_register(&code, huge.c_str()), nullptr);
    }
    EXPECT_EQ(malfunctions, 2);
    EXPECT_EQ(kestu_error_text(code), nullptr);
    int again = 0;
    EXPECT_OK(kestu_error_register(&again, "text"));
    EXPECT_EQ(again, code);
    EXPECT_STREQ(kestu_error_text(code), "text");
    EXPECT_OK(kestu_error_deregister(code));
    kestu_error_set_malfunction_handler(previous);
}

TEST(ErrorMalfunctionDeathTest, TheDefaultHandlerPrintsAndAborts) {
    EXPECT_DEATH(kestu_error_malfunction(kestu_error_create(2, 0, nullptr, "broken")),
                 "Malfunction: broken");
}
