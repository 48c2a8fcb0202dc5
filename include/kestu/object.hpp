// Objects, which own their children. Their signals are in signal.hpp.
//
//     kestu::UniqueObject window("window");
//     kestu::Object button = window.add_child("ok");
//     assert(window.child("ok") == button && !window.child("cancel"));
#pragma once

#include "../kestu_lib.h"
#include "../kestu_obj.h"
#include "error.hpp"

#include <utility>

namespace kestu {
inline namespace KESTU_CPP {

// The object engine while it lives: signals need it.
class ObjectEngine {
  public:
    // Starts the engine in a child of `pool`.
    explicit ObjectEngine(apr_pool_t *pool = kestu_pool) : is_running_(true) {
        detail::check(kestu_obj_engine_init(pool));
    }

    // As the constructor, but returns the error.
    static Expected<ObjectEngine> make(std::nothrow_t, apr_pool_t *pool = kestu_pool) {
        if (kestu_error_t *err = kestu_obj_engine_init(pool))
            return detail::failed(err);
        ObjectEngine engine(nullptr, true);
        return engine;
    }

    ObjectEngine(ObjectEngine &&other) noexcept
        : is_running_(std::exchange(other.is_running_, false)) {}
    ObjectEngine &operator=(ObjectEngine &&other) noexcept {
        std::swap(is_running_, other.is_running_);
        return *this;
    }
    ~ObjectEngine() {
        if (is_running_)
            kestu_error_clear(kestu_obj_engine_terminate());
    }

  private:
    ObjectEngine(std::nullptr_t, bool is_running) noexcept : is_running_(is_running) {}

    bool is_running_;
};

class UniqueObject;

// An object that others own: its parent, its pool or a UniqueObject.
class Object {
  public:
    // Refers to `obj`; null is no object.
    Object(kestu_obj_t *obj) noexcept : obj_(obj) {}

    // Its name; null for none.
    const char *name() const { return kestu_obj_get_name(obj_); }

    // Gives it a copy of `name`.
    void set_name(CString name) const { kestu_obj_set_name(obj_, name); }

    // The code of its type; 0 for none.
    uint32_t type() const { return kestu_obj_get_type(obj_); }

    // Sets the code of its type.
    void set_type(uint32_t type) const { kestu_obj_set_type(obj_, type); }

    // The user's datum.
    void *data() const { return kestu_obj_get_data(obj_); }

    // Sets the user's datum, which it does not own.
    void set_data(void *data) const { kestu_obj_set_data(obj_, data); }

    // Its pool, which ends with it.
    apr_pool_t *pool() const { return kestu_obj_get_pool(obj_); }

    // Makes a child, which this object owns. A null name is none.
    Object add_child(CString name) const {
        kestu_obj_t *child = nullptr;
        detail::check(make_child(name, &child));
        return child;
    }

    // As `add_child` above, but returns the error.
    Expected<Object> add_child(std::nothrow_t, CString name) const {
        kestu_obj_t *child = nullptr;
        if (kestu_error_t *err = make_child(name, &child))
            return detail::failed(err);
        return Object(child);
    }

    // Makes `child` the last child of this object, which owns it from then on.
    inline void adopt(UniqueObject &&child) const;

    // As `adopt` above, but returns the error.
    inline Expected<void> adopt(std::nothrow_t, UniqueObject &&child) const;

    // The child that was added under `name`; false when there is none.
    Object child(CString name) const { return kestu_obj_getc(obj_, name); }

    // Whether it refers to an object.
    explicit operator bool() const noexcept { return obj_ != nullptr; }

    // Destroys it with its children; whoever owns it learns of it only when that is its parent.
    void destroy() const { kestu_obj_destroy(obj_); }

    // Whether both refer to the same object.
    friend bool operator==(Object a, Object b) noexcept { return a.obj_ == b.obj_; }

    // The object of the C functions.
    kestu_obj_t *get() const noexcept { return obj_; }

  private:
    kestu_error_t *make_child(const char *name, kestu_obj_t **child) const {
        *child = nullptr;
        kestu_error_t *err = kestu_obj_create(child, name, pool());
        if (!err)
            err = kestu_obj_addc(obj_, *child);
        if (err && *child)
            kestu_obj_destroy(*child);
        return err;
    }

  protected:
    kestu_obj_t *obj_; // null for none
};

// An object that it owns, and destroys at the end of the scope. Its pool lives longer.
class UniqueObject : public Object {
  public:
    // Makes an object in a child of `pool`. A null name is none.
    explicit UniqueObject(CString name, apr_pool_t *pool = kestu_pool) : Object(nullptr) {
        detail::check(create(name, pool));
    }

    // As the constructor, but returns the error.
    static Expected<UniqueObject> make(std::nothrow_t, CString name,
                                       apr_pool_t *pool = kestu_pool) {
        UniqueObject made;
        if (kestu_error_t *err = made.create(name, pool))
            return detail::failed(err);
        return made;
    }

    UniqueObject(UniqueObject &&other) noexcept : Object(other.release()) {}
    UniqueObject &operator=(UniqueObject &&other) noexcept {
        std::swap(obj_, other.obj_);
        return *this;
    }
    ~UniqueObject() {
        if (obj_)
            kestu_obj_destroy(obj_);
    }

    // The object, which is the caller's from then on.
    [[nodiscard]] kestu_obj_t *release() noexcept { return std::exchange(obj_, nullptr); }

  private:
    UniqueObject() noexcept : Object(nullptr) {}

    kestu_error_t *create(const char *name, apr_pool_t *pool) {
        kestu_error_t *err = kestu_obj_create(&obj_, name, pool);
        if (err && obj_)
            kestu_obj_destroy(release());
        return err;
    }
};

inline Expected<void> Object::adopt(std::nothrow_t, UniqueObject &&child) const {
    if (kestu_error_t *err = kestu_obj_addc(obj_, child.get()))
        return detail::failed(err);
    static_cast<void>(child.release());
    return {};
}
inline void Object::adopt(UniqueObject &&child) const {
    take(adopt(std::nothrow, std::move(child)));
}

} // namespace KESTU_CPP
} // namespace kestu
