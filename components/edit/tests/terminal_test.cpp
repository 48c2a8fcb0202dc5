#include "kestu_edit.h"
#include "support/test.hpp"
