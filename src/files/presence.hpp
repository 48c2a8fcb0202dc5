// Whether the files that a folder names are there, with few questions to the system.
#pragma once

#include <cstdint>

namespace kestu {

// A file may vanish between the reading of its name and its turn, and some folders may be read but
// not searched, so that each file would have to be looked up, at ten times the cost of its name.
// But where the folder may be searched and its file system names what is there, a name that was
// just read is good until something removes files; and the only thing that happens in the meantime
// is the callback's work. A callback that returns at once has asked the system for nothing.
class Presence {
  public:
    // The folder at hand from now on, and no name of it read yet.
    void enter(int folder);

    // Whether the file is there and may be looked up.
    bool has(const char *name) const { return is_certain_ || is_there(name); }

    // Calls `work`, which may remove files.
    template <typename Work>
    auto during(Work work) {
        const uint64_t start = __builtin_ia32_rdtsc();
        auto result = work();
        is_certain_ = is_certain_ && __builtin_ia32_rdtsc() - start < shortest_removal;
        return result;
    }

  private:
    // In ticks of the processor's clock: far less than the system takes to remove a file.
    static constexpr uint64_t shortest_removal = 300;

    bool is_there(const char *name) const;

    int folder_ = -1;
    bool is_certain_ = false;
};

} // namespace kestu
