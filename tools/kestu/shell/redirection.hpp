// Output of a command that goes to a file or another program.
#pragma once

#include <string>

#include <sys/types.h>

namespace program {

// While it lives, standard output goes where `rest`, which begins with | or >, says; the system's
// shell takes it there. Empty changes nothing.
class Redirection {
  public:
    explicit Redirection(const std::string &rest);
    ~Redirection() { finish(); }
    Redirection(const Redirection &) = delete;
    Redirection &operator=(const Redirection &) = delete;

    // Waits until all is taken there; the exit status of that.
    int finish();

  private:
    int saved_ = -1;
    pid_t shell_ = -1;
};

} // namespace program
