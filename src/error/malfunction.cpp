// What happens when the library cannot go on.
#include "error/error.hpp"

#include "error/lock.hpp"
#include "error/system.hpp"

#include <cstdlib>

using namespace kestu;

namespace {

constexpr const char *final_message = "Impossible to continue. Aborting...";

kestu_error_t *print_and_abort(kestu_error_t *err) {
    kestu_error_clear(kestu_error_handle(err, kestu_error_stdhandler, nullptr));
    std::abort();
}

} // namespace

namespace kestu {

constinit ErrorSystem error_system = {nullptr, nullptr, nullptr, print_and_abort};

void give_up(apr_status_t status, const char *failed_action) {
    kestu_error_t *cause = wrap(fail_apr(status), failed_action);
    kestu_error_malfunction(kestu_error_create_i(KESTU_ERROR_MALFUNCTION, 0, 0, nullptr, nullptr,
                                                 cause, final_message));
}

kestu_error_t *give_up_without_memory(apr_status_t status, const char *failed_action) {
    thread_local char text[255];
    thread_local kestu_error_t chain[3];
    apr_strerror(status, text, sizeof text);
    chain[0] = chain[1] = chain[2] = {};
    chain[0].type = KESTU_ERROR_MALFUNCTION;
    chain[0].message = final_message;
    chain[0].child = &chain[1];
    chain[1].message = failed_action;
    chain[1].child = &chain[2];
    chain[2].message = text;
    kestu_error_malfunction(chain);
    return chain;
}

} // namespace kestu

kestu_error_malfunction_func
kestu_error_set_malfunction_handler(kestu_error_malfunction_func handler) {
    kestu_error_malfunction_func previous = error_system.malfunction_handler;
    SystemLock lock("Cannot set malfunction handler.");
    error_system.malfunction_handler = handler;
    return previous;
}

kestu_error_malfunction_func kestu_error_get_malfunction_handler(void) {
    return error_system.malfunction_handler;
}

kestu_error_t *kestu_error_malfunction(kestu_error_t *err) {
    return error_system.malfunction_handler(err);
}
