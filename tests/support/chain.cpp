#include "support/chain.hpp"

namespace kestu::test {

std::vector<Element> take_chain(kestu_error_t *err) {
    std::vector<Element> elements;
    for (const kestu_error_t *e = err; e; e = e->child)
        elements.emplace_back(e->code, e->message ? e->message : "");
    kestu_error_clear(err);
    return elements;
}

std::vector<std::string> take_lines(kestu_error_t *err) {
    std::vector<std::string> lines;
    const auto collect = [](const char *line, void *baton) {
        static_cast<std::vector<std::string> *>(baton)->emplace_back(line);
        return 0;
    };
    kestu_error_clear(kestu_error_handle(err, collect, &lines));
    return lines;
}

} // namespace kestu::test
