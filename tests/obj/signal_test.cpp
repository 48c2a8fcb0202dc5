// Signals and slots.
#include <utarray.h>
#include <uthash.h>

#include "support/test.hpp"

using namespace kestu::test;

namespace {

constexpr uint32_t ping = 100;
constexpr uint32_t pong = 101;
constexpr uint32_t every_signal = 0xFFFFFFFF;

std::vector<std::string> calls;
std::function<void(kestu_obj_t *source, kestu_obj_t *destination)> then; // run by `act`

void note(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *user,
          void *argument) {
    std::string call = std::string(kestu_obj_get_name(source)) + ">" +
                       kestu_obj_get_name(destination) + ":" + std::to_string(code);
    for (void *text : {user, argument})
        if (text)
            call += std::string(" ") + static_cast<char *>(text);
    calls.push_back(call);
}

void note_too(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *, void *) {
    static char too[] = "too";
    note(source, code, destination, too, nullptr);
}

void act(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *, void *) {
    note(source, code, destination, nullptr, nullptr);
    then(source, destination);
}

class SignalTest : public testing::Test {
  protected:
    void SetUp() override {
        calls.clear();
        then = [](kestu_obj_t *, kestu_obj_t *) {};
        ASSERT_OK(kestu_obj_engine_init(pool));
        for (kestu_obj_t **obj : {&a, &b, &c}) {
            static const char *const names[] = {"a", "b", "c"};
            ASSERT_OK(kestu_obj_create(obj, names[obj - &a], pool));
            ASSERT_OK(kestu_obj_add_signal(*obj, ping));
            ASSERT_OK(kestu_obj_add_signal(*obj, pong));
        }
    }
    void TearDown() override { ASSERT_OK(kestu_obj_engine_terminate()); }

    static void connect(kestu_obj_t *from, uint32_t code, kestu_obj_t *to,
                        kestu_slot_func callback = note, void *user = nullptr) {
        EXPECT_OK(kestu_obj_connect(from, code, to, callback, user));
    }

    // What an emission calls.
    static std::vector<std::string> emit(kestu_obj_t *obj, uint32_t code) {
        calls.clear();
        EXPECT_OK(kestu_obj_emit_signal(obj, code, nullptr));
        return calls;
    }

    static std::string report(kestu_obj_t *obj) {
        char *text = nullptr;
        size_t size = 0;
        FILE *stream = open_memstream(&text, &size);
        kestu_obj_print_signals(obj, stream);
        fclose(stream);
        std::string result = text;
        free(text);
        return result;
    }

    static const kestu_osig_t *signal(const kestu_obj_t *obj, unsigned index) {
        return static_cast<kestu_osig_t *>(utarray_eltptr(obj->signals, index));
    }

    Pool pool;
    kestu_obj_t *a, *b, *c;
};

} // namespace

TEST_F(SignalTest, TypesGetCodesThatAreNotHandedOutAgain) {
    uint32_t named = 0, nameless = 0, next = 0;
    ASSERT_OK(kestu_objsig_register(&named, "named"));
    ASSERT_OK(kestu_objsig_register(&nameless, nullptr));
    EXPECT_GE(named, 100u);
    EXPECT_EQ(nameless, named + 1);
    EXPECT_EQ(kestu_objsig_query_type("named"), named);
    EXPECT_EQ(kestu_objsig_query_type("other"), 0u);
    EXPECT_EQ(kestu_objsig_query_type(nullptr), 0u);
    const std::string huge(10'000'000, 'x');
    EXPECT_CHAIN(pool.without_memory([&] { return kestu_objsig_register(&next, huge.c_str()); }),
                 120012, "Cannot register signal.", "");
    kestu_error_t *full = pool.without_memory([&] {
        kestu_error_t *err = nullptr;
        for (int i = 0; !err && i < 10'000; ++i)
            err = kestu_objsig_register(&next, nullptr);
        return err;
    });
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(take_chain(full).front(), Element(120012, "Cannot register signal."));
    const uint32_t last = next;
    ASSERT_OK(kestu_objsig_deregister(named));
    ASSERT_OK(kestu_objsig_deregister(named));
    EXPECT_EQ(kestu_objsig_query_type("named"), 0u);
    ASSERT_OK(kestu_objsig_register(&next, nullptr));
    EXPECT_EQ(next, last + 1);
    EXPECT_EQ(kestu_objsig_query_type("named"), next) << "a record used again keeps its name";
}

TEST_F(SignalTest, EmitsWithoutMemory) {
    int count = 0;
    const auto raise = [](kestu_obj_t *, uint32_t, kestu_obj_t *, void *user, void *) {
        ++*static_cast<int *>(user);
    };
    connect(a, ping, b, raise, &count);
    connect(a, ping, c, raise, &count);
    AllocFailure failure(1, all_after);
    kestu_error_clear(kestu_obj_emit_signal(a, ping, nullptr));
    EXPECT_EQ(count, 2);
}

TEST_F(SignalTest, CallsSlotsByDestinationInTheOrderOfConnection) {
    static char one[] = "1", two[] = "2", argument[] = "arg";
    connect(a, ping, b, note, one);
    connect(a, ping, c);
    connect(a, ping, b, note_too);
    connect(a, ping, b, note, two); // replaces the pointer only
    connect(a, ping, a);
    EXPECT_OK(kestu_obj_emit_signal(a, ping, argument));
    EXPECT_THAT(calls, ElementsAre("a>b:100 2 arg", "a>b:100 too", "a>c:100 arg", "a>a:100 arg"));
    EXPECT_THAT(emit(a, pong), IsEmpty());
}

TEST_F(SignalTest, UnknownCodesAreErrorsOrNothingAsDescribed) {
    EXPECT_CHAIN(kestu_obj_emit_signal(a, 7, nullptr), 120104, "Cannot emit signal.",
                 "Cannot find signal with code 7.");
    EXPECT_CHAIN(kestu_obj_connect(a, every_signal, b, note, nullptr), 120104,
                 "Cannot connect objects by signal.", "Cannot find signal with code -1.");
    EXPECT_CHAIN(kestu_obj_set_signal_flags(a, 7, 2), 120104, "Cannot set signal flags.",
                 "Cannot find signal with code 7.");
    EXPECT_CHAIN(kestu_obj_add_signal(a, ping), 120105, "Cannot add signal to object.",
                 "A signal with code 100 already exists.");
    kestu_obj_remove_signal(a, 7);
    kestu_obj_disconnect(a, 7, b, note);
    kestu_obj_delete_signals(c);
    kestu_obj_remove_signal(c, ping);
    kestu_obj_disconnect(c, ping, nullptr, nullptr);
    EXPECT_EQ(report(c), "");
}

TEST_F(SignalTest, DisconnectsAllOfADestinationOrOneSlot) {
    for (const auto &[destination, callback, left] :
         {std::tuple<kestu_obj_t *, kestu_slot_func, std::vector<std::string>>{
              b, note, {"a>b:100 too", "a>c:100"}},
          {b, nullptr, {"a>c:100"}},
          {nullptr, nullptr, {}},
          {nullptr, note_too, {}},
          {a, nullptr, {"a>b:100", "a>b:100 too", "a>c:100"}}}) {
        kestu_obj_disconnect(a, ping, nullptr, nullptr);
        connect(a, ping, b);
        connect(a, ping, b, note_too);
        connect(a, ping, c);
        kestu_obj_disconnect(a, ping, destination, callback);
        EXPECT_EQ(emit(a, ping), left);
    }
    kestu_obj_disconnect(a, ping, c, nullptr);
    connect(a, pong, b);
    kestu_obj_disconnect(a, 0x80000000, b, nullptr);
    EXPECT_THAT(emit(a, ping), IsEmpty());
    EXPECT_THAT(emit(a, pong), IsEmpty());
}

TEST_F(SignalTest, ChangesDuringAnEmissionWaitForItsEnd) {
    connect(a, ping, a, act);
    connect(a, ping, b);
    connect(a, ping, c);
    then = [](kestu_obj_t *source, kestu_obj_t *) { connect(source, ping, source, note_too); };
    EXPECT_THAT(emit(a, ping), ElementsAre("a>a:100", "a>b:100", "a>c:100"));
    then = [this](kestu_obj_t *, kestu_obj_t *) {
        kestu_obj_disconnect(a, ping, b, nullptr);
        kestu_obj_disconnect(a, ping, a, act);
        kestu_obj_disconnect(a, ping, a, note_too);
    };
    EXPECT_THAT(emit(a, ping), ElementsAre("a>a:100", "a>c:100"))
        << "what is disconnected is not called any more";
    EXPECT_THAT(emit(a, ping), ElementsAre("a>c:100"));
}

TEST_F(SignalTest, ASignalDoesNotReenterItselfButOthersMayFollow) {
    connect(a, ping, b, act);
    connect(a, pong, c);
    then = [this](kestu_obj_t *source, kestu_obj_t *) {
        EXPECT_OK(kestu_obj_emit_signal(source, ping, nullptr));
        EXPECT_OK(kestu_obj_emit_signal(source, pong, nullptr));
        for (uint32_t code = 200; code < 240; ++code) // moves the array of signals
            EXPECT_OK(kestu_obj_add_signal(a, code));
        kestu_obj_remove_signal(a, pong);
    };
    EXPECT_THAT(emit(a, ping), ElementsAre("a>b:100", "a>c:101"));
    EXPECT_EQ(signal(a, 1)->flags, 0);
    EXPECT_EQ(signal(a, 2)->code, 200);
}

TEST_F(SignalTest, ASignalThatRemovesItselfIsGoneAtTheEnd) {
    connect(a, ping, b, act);
    connect(a, ping, c);
    then = [this](kestu_obj_t *, kestu_obj_t *) {
        EXPECT_OK(kestu_obj_connect(a, ping, b, note_too, nullptr));
        kestu_obj_remove_signal(a, pong);
        kestu_obj_remove_signal(a, ping);
        EXPECT_OK(kestu_obj_connect(a, ping, b, note, nullptr)); // comes too late
    };
    EXPECT_THAT(emit(a, ping), ElementsAre("a>b:100", "a>c:100"));
    EXPECT_EQ(utarray_len(a->signals), 1u);
}

TEST_F(SignalTest, FailuresOfWhatWaitedAreToldOnlyWhenTheSignalGoes) {
    for (const bool removed : {false, true}) {
        ASSERT_OK(kestu_obj_add_signal(a, 300));
        connect(a, 300, b, act);
        then = [&](kestu_obj_t *, kestu_obj_t *) {
            kestu_obj_t *mute = nullptr;
            EXPECT_OK(kestu_obj_create(&mute, "mute", pool));
            kestu_obj_delete_signals(mute);
            EXPECT_OK(kestu_obj_connect(a, 300, mute, note, nullptr));
            if (removed)
                kestu_obj_remove_signal(a, 300);
            then = [](kestu_obj_t *, kestu_obj_t *) {};
        };
        const std::vector<Element> chain = take_chain(kestu_obj_emit_signal(a, 300, nullptr));
        if (removed) {
            EXPECT_THAT(chain, ElementsAre(Element(120104, "Cannot connect objects by signal."),
                                           Element(120104, "Cannot connect objects by signal."),
                                           Element(120104, "Cannot find signal with code 1.")));
        } else {
            EXPECT_THAT(chain, IsEmpty());
            kestu_obj_remove_signal(a, 300);
        }
    }
}

TEST_F(SignalTest, ABusyFlagMakesASignalDumb) {
    connect(a, ping, b);
    ASSERT_OK(kestu_obj_set_signal_flags(a, ping, 0x70002));
    EXPECT_EQ(signal(a, 1)->flags, 2);
    EXPECT_THAT(emit(a, ping), ElementsAre("a>b:100"));
    ASSERT_OK(kestu_obj_set_signal_flags(a, ping, KESTU_OSIG_BUSY));
    EXPECT_EQ(signal(a, 1)->flags, 3);
    EXPECT_THAT(emit(a, ping), IsEmpty());
    connect(a, ping, c);
    kestu_obj_remove_signal(a, ping);
    EXPECT_EQ(utarray_len(signal(a, 1)->actions), 2u);
    ASSERT_OK(kestu_obj_set_signal_flags(a, KESTU_OBJ_SIGNAL_DESTROY, KESTU_OSIG_BUSY));
    connect(b, pong, a);
    kestu_obj_destroy(a);
    EXPECT_THAT(emit(b, pong), IsEmpty()) << "dumb or not, the dead are forgotten";
}

TEST_F(SignalTest, ReportsToTheLetter) {
    connect(a, ping, b, note, &calls);
    char expected[512];
    snprintf(expected, sizeof expected,
             "Object a (%p) has 3 signal(s).\n"
             " Signal 1 (flags=0) has 1 destination(s).\n"
             "  Destination b (%p) has 1 slots(s).\n"
             "   Slot> usr: (nil) callback: ",
             static_cast<void *>(a), static_cast<void *>(b));
    const std::string text = report(a);
    EXPECT_THAT(text, testing::StartsWith(expected));
    EXPECT_THAT(text, HasSubstr(" (autodel)\n Signal 100 (flags=0) has 1 destination(s).\n"));
    snprintf(expected, sizeof expected, "   Slot> usr: %p callback: %p (",
             static_cast<void *>(&calls), reinterpret_cast<void *>(note));
    EXPECT_THAT(text, HasSubstr(expected));
    EXPECT_THAT(text, testing::EndsWith(")\n Signal 101 (flags=0) has 0 destination(s).\n"));
}

// Programs may build signals to the public records.
TEST_F(SignalTest, TheDestructorReleasesEntriesThatAProgramHasBuilt) {
    const long blocks = live_blocks();
    kestu_osig_t built = {ping, 0, nullptr, nullptr};
    for (kestu_obj_t *destination : {a, b}) {
        kestu_odest_t *entry = nullptr;
        ASSERT_OK(kestu_mem_calloc(1, sizeof *entry, &entry));
        entry->destination = destination;
        if (destination == b) {
            const kestu_oslot_t slot = {nullptr, note};
            utarray_new(entry->slots, &oslot_icd);
            utarray_push_back(entry->slots, &slot);
        }
        HASH_ADD_PTR(built.destinations, destination, entry);
    }
    utarray_new(built.actions, &osigact_icd);
    osig_dtor(&built);
    EXPECT_EQ(built.destinations, nullptr);
    EXPECT_EQ(live_blocks(), blocks);
}
