#include "error/state.hpp"

constinit kestu_error_t *KestuDLlistStopWalking = nullptr;

namespace kestu {

constinit ErrorState error_state = {};

} // namespace kestu
