// A plain line editor, and the library's beside it.
#pragma once

#include "console/editor.hpp"
#include "fuzz/check.hpp"

#include <vector>

namespace kestu::fuzz {

using Next = Effect::Next;

// Entry 0 of the history is the new line, as it was when it was left for the first time.
class PlainEditor {
  public:
    void begin() {
        line.clear();
        cursor = entry_ = 0;
        left_new_line_ = false;
    }

    Next press(int key) {
        switch (key) {
        case KESTU_KEY_UNREADABLE:
            return Next::fail;
        case 3:
            line.clear();
            cursor = 0;
            return Next::finish;
        case 4:
            return line.empty() ? Next::stop : Next::keep;
        case 13:
            if (!line.empty())
                history_.insert(history_.begin() + 1, line);
            [[fallthrough]];
        case 10:
            line.insert(cursor++, 1, '\n');
            return Next::finish;
        default:
            edit(key);
            return Next::redraw;
        }
    }

    std::string line;
    size_t cursor = 0;

  private:
    void edit(int key) {
        if (key == 1 || key == KESTU_KEY_HOME)
            cursor = 0;
        else if (key == 5 || key == KESTU_KEY_END)
            cursor = line.size();
        else if (key == KESTU_KEY_LEFT)
            cursor -= cursor > 0;
        else if (key == 12 || key == KESTU_KEY_RIGHT)
            cursor = std::min(cursor + 1, line.size());
        else if ((key == 8 || key == 127) && cursor > 0)
            line.erase(--cursor, 1);
        else if (key == KESTU_KEY_DELETE && cursor < line.size())
            line.erase(cursor, 1);
        else if (key == KESTU_KEY_UP && entry_ + 1 < history_.size())
            recall(entry_ + 1);
        else if (key == KESTU_KEY_DOWN && entry_ > 0)
            recall(entry_ - 1);
        else if (key < 256 && !std::strchr("\x08\x0b\x0e\x10\x7f", key))
            line.insert(cursor++, 1, static_cast<char>(key));
    }

    void recall(size_t wanted) {
        if (!left_new_line_)
            history_[0] = line;
        left_new_line_ = true;
        entry_ = wanted;
        line = history_[entry_];
        cursor = line.size();
    }

    std::vector<std::string> history_{""};
    size_t entry_ = 0;
    bool left_new_line_ = false;
};

// Both editors on one context.
class TwoEditors {
  public:
    TwoEditors() : ctx_(started()), editor_(*ctx_) { require(!editor_.begin()); }
    ~TwoEditors() { kestu_ri_readline_terminate(ctx_); }
    TwoEditors(const TwoEditors &) = delete;
    TwoEditors &operator=(const TwoEditors &) = delete;

    // Lines that have ended are followed by new ones.
    Next press(int key) {
        const Effect effect = editor_.feed(key);
        require(effect.next == plain_.press(key));
        require(ctx_->line == plain_.line && editor_.line().cursor() == plain_.cursor);
        require(plain_.line.size() < ctx_->size);
        const bool has_error = effect.next == Next::stop || effect.next == Next::fail;
        require(has_error == !succeeded(effect.error));
        if (effect.next != Next::redraw && effect.next != Next::keep) {
            require(!editor_.begin());
            plain_.begin();
        }
        return effect.next;
    }

  private:
    static kestu_ri_t *started() {
        kestu_ri_t *ctx = nullptr;
        require(!kestu_ri_readline_init(&ctx, "> ", 1, kestu_pool));
        return ctx;
    }

    kestu_ri_t *ctx_;
    Editor editor_;
    PlainEditor plain_;
};

} // namespace kestu::fuzz
