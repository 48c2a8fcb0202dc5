// Signals whose slots are lambdas and member functions.
//
//     kestu::ObjectEngine engine;
//     kestu::UniqueObject button("ok");
//     kestu::Signal<void(int, std::string_view)> clicked(button, "clicked");
//     kestu::ScopedConnection shown = clicked.connect([](int x, std::string_view which) {
//         printf("%d %.*s\n", x, int(which.size()), which.data());
//     });
//     clicked(12, "left");
#pragma once

#include "../kestu_link.h"
#include "object.hpp"

#include <tuple>
#include <type_traits>

namespace kestu {
inline namespace KESTU_CPP {

namespace detail {

// What a connection calls. It lives until both objects of the connection have let go of it, all
// connections that name it have, and no call of it is under way.
//
// An object lets go at the end of its pool: before that it is cleaned up, so that nothing can call
// the slot any more.
class Slot {
  public:
    Slot() noexcept = default;
    Slot(const Slot &) = delete;
    Slot &operator=(const Slot &) = delete;

    void join_objects(kestu_obj_t *source, kestu_obj_t *destination) noexcept {
        source_ = source;
        destination_ = destination;
        hold();
        apr_pool_cleanup_register(pool_of(source_), this, source_ends, apr_pool_cleanup_null);
        if (source_ != destination_)
            apr_pool_cleanup_register(pool_of(destination_), this, destination_ends,
                                      apr_pool_cleanup_null);
    }

    void hold() noexcept { ++holders_; }
    void let_go() noexcept {
        if (--holders_ == 0)
            delete this;
    }

    // The connection has ended.
    void leave_objects() noexcept {
        if (!source_)
            return;
        apr_pool_cleanup_kill(pool_of(source_), this, source_ends);
        if (source_ != destination_)
            apr_pool_cleanup_kill(pool_of(destination_), this, destination_ends);
        source_ = destination_ = nullptr;
        let_go();
    }

  protected:
    virtual ~Slot() = default;

  private:
    static apr_pool_t *pool_of(kestu_obj_t *obj) { return kestu_obj_get_pool(obj); }

    void object_ends(kestu_obj_t *obj) noexcept {
        hold();
        kestu_obj_cleanup(obj);
        leave_objects();
        let_go();
    }
    static apr_status_t source_ends(void *slot) noexcept {
        static_cast<Slot *>(slot)->object_ends(static_cast<Slot *>(slot)->source_);
        return APR_SUCCESS;
    }
    static apr_status_t destination_ends(void *slot) noexcept {
        static_cast<Slot *>(slot)->object_ends(static_cast<Slot *>(slot)->destination_);
        return APR_SUCCESS;
    }

    int holders_ = 0;
    kestu_obj_t *source_ = nullptr; // null when the connection has ended
    kestu_obj_t *destination_ = nullptr;
};

// The argument of an emission: what the slots are called with, and what one of them threw.
template <typename... Arguments>
struct Emission {
    std::tuple<Arguments &...> arguments;
    Thrown thrown;
};

template <typename Function, typename... Arguments>
class TypedSlot final : public Slot {
  public:
    explicit TypedSlot(Function fn) : fn_(std::move(fn)) {}

    static kestu_error_t *call(kestu_obj_t *, uint32_t, kestu_obj_t *, void *user,
                               void *argument) noexcept {
        auto *slot = static_cast<TypedSlot *>(user);
        auto *emission = static_cast<Emission<Arguments...> *>(argument);
        slot->hold();
        kestu_error_t *result = emission->thrown.template run<kestu_error_t *>(
            [&]() noexcept(
                std::is_nothrow_invocable_v<Function &, Arguments &...>) -> kestu_error_t * {
                std::apply(slot->fn_, emission->arguments);
                return nullptr;
            });
        slot->let_go();
        return result;
    }

  private:
    Function fn_;
};

} // namespace detail

// A handle of a connection, which may live longer than it. Without any the connection goes on until
// one of its objects ends.
class Connection {
  public:
    Connection() noexcept = default;

    // Made by Signal.
    Connection(detail::Slot *slot, kestu_link_t *link) noexcept : slot_(slot), link_(link) {
        slot_->hold();
    }
    Connection(Connection &&other) noexcept
        : slot_(std::exchange(other.slot_, nullptr)), link_(std::exchange(other.link_, nullptr)) {}
    Connection &operator=(Connection &&other) noexcept {
        std::swap(slot_, other.slot_);
        std::swap(link_, other.link_);
        return *this;
    }
    ~Connection() {
        kestu_link_release(&link_);
        if (slot_)
            slot_->let_go();
    }

    // Ends the connection. Its slot is not called any more.
    void disconnect() {
        kestu_link_disconnect(link_);
        if (slot_)
            slot_->leave_objects();
    }

    // Whether the connection has not ended.
    bool is_connected() const { return kestu_link_is_alive(link_) != 0; }

    // Lets emissions pass over the slot.
    void block() { kestu_link_block(link_); }

    // Lets emissions call the slot again.
    void unblock() { kestu_link_unblock(link_); }

    // The link of the C functions, which stays this one's.
    kestu_link_t *get() const noexcept { return link_; }

  private:
    detail::Slot *slot_ = nullptr;
    kestu_link_t *link_ = nullptr;
};

// A connection that ends with the scope.
class ScopedConnection {
  public:
    ScopedConnection() noexcept = default;

    // Takes over a connection.
    ScopedConnection(Connection connection) noexcept : connection_(std::move(connection)) {}
    ScopedConnection(ScopedConnection &&) noexcept = default;
    ScopedConnection &operator=(ScopedConnection &&other) noexcept {
        std::swap(connection_, other.connection_);
        return *this;
    }
    ~ScopedConnection() { connection_.disconnect(); }

    // The connection.
    Connection *operator->() noexcept { return &connection_; }

    // The connection, which then goes on behind the scope.
    Connection release() noexcept { return std::move(connection_); }

  private:
    Connection connection_;
};

template <typename Arguments>
class Signal;

// A signal of an object, by its name. All who emit it and connect to it do so through this class
// and with the same arguments.
template <typename... Arguments>
class Signal<void(Arguments...)> {
    using Emission = detail::Emission<Arguments...>;

  public:
    // Gives the object the signal unless it has it.
    Signal(Object object, CString name) : object_(object) { detail::check(add(name)); }

    // As the constructor, but returns the error.
    static Expected<Signal> make(std::nothrow_t, Object object, CString name) {
        Signal signal(object);
        if (kestu_error_t *err = signal.add(name))
            return detail::failed(err);
        return signal;
    }

    // Connects a callable, for as long as the signal's object lives. Flags are KESTU_LINK_ONCE,
    // KESTU_LINK_FIRST and KESTU_LINK_LAST.
    template <typename Function>
    Connection connect(Function fn, uint32_t flags = 0) const {
        return connect(object_, std::move(fn), flags);
    }

    // As `connect` above, for as long as `destination` lives too.
    template <typename Function>
    Connection connect(Object destination, Function fn, uint32_t flags = 0) const {
        return take(connect(std::nothrow, destination, std::move(fn), flags));
    }

    // As `connect` above, but returns the error.
    template <typename Function>
    Expected<Connection> connect(std::nothrow_t, Object destination, Function fn,
                                 uint32_t flags = 0) const {
        using Slot = detail::TypedSlot<Function, Arguments...>;
        auto *slot = new Slot(std::move(fn));
        slot->join_objects(object_.get(), destination.get());
        kestu_link_t *link = nullptr;
        if (kestu_error_t *err = kestu_obj_link(object_.get(), code_, destination.get(), Slot::call,
                                                slot, flags, &link)) {
            slot->leave_objects();
            return detail::failed(err);
        }
        return Connection(slot, link);
    }

    // Connects a member function; the instance lives as long as the connection.
    template <typename Class, typename... Parameters>
    Connection connect(Object destination, Class &instance, void (Class::*method)(Parameters...),
                       uint32_t flags = 0) const {
        return connect(
            destination,
            [&instance, method](Arguments &...arguments) { (instance.*method)(arguments...); },
            flags);
    }

    // Calls the slots with the arguments. What one throws ends the emission and comes out here.
    void operator()(Arguments... arguments) const {
        Emission emission{{arguments...}, {}};
        kestu_error_t *err = kestu_obj_emit_until_error(object_.get(), code_, &emission);
        if (err) [[unlikely]]
            raise(emission, err);
    }
    // Calls the slots with the arguments. An Error that one throws ends the emission and is
    // returned; what else it throws is thrown here too.
    Expected<void> emit(std::nothrow_t, Arguments... arguments) const {
        try {
            (*this)(static_cast<Arguments>(arguments)...);
            return {};
        } catch (Error &error) {
            return Unexpected(std::move(error));
        }
    }

    // The signal's object.
    Object object() const noexcept { return object_; }

    // The code of its type.
    uint32_t code() const noexcept { return code_; }

  private:
    explicit Signal(Object object) noexcept : object_(object) {}

    kestu_error_t *add(const char *name) {
        kestu_error_t *err = kestu_objsig_register_once(&code_, name);
        if (!err)
            err = kestu_obj_add_signal(object_.get(), code_);
        if (err && kestu_error_is(err, KESTU_ERR_SIGNAL_EXISTS)) {
            kestu_error_clear(err);
            err = nullptr;
        }
        return err;
    }

    [[gnu::cold, gnu::noinline]] static void raise(Emission &emission, kestu_error_t *err) {
        if (!emission.thrown)
            detail::raise(err);
        kestu_error_clear(err);
        emission.thrown.rethrow();
    }

    Object object_;
    uint32_t code_ = 0;
};

} // namespace KESTU_CPP
} // namespace kestu
