#include "error/malfunction.hpp"

#include "error/report.hpp"
#include "error/state.hpp"

#include <cstdlib>

namespace kestu {
namespace {

kestu_error_t *print_and_abort(kestu_error_t *err) {
    report(err);
    std::abort();
}

} // namespace

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

using namespace kestu;

kestu_error_malfunction_func kestu_error_get_malfunction_handler(void) {
    return error_state.malfunction_handler ? error_state.malfunction_handler : print_and_abort;
}

kestu_error_t *kestu_error_malfunction(kestu_error_t *err) {
    return kestu_error_get_malfunction_handler()(err);
}
