// Completion: what all proposals have in common, or a list of them.
#include "editor.hpp"

#include "clusters.hpp"
#include "failure.hpp"

#include <cstdio>

namespace kestu::edit {
namespace {

size_t width_of(std::string_view text) {
    Frame frame;
    frame.begin(0);
    frame.add(text, {});
    return frame.whole() ? frame.row(0).width : 0;
}

// How much of two texts is the same, in whole clusters of the first.
size_t same_front(std::string_view a, std::string_view b) {
    size_t at = 0;
    while (at < a.size()) {
        const std::string_view cluster = part(a, at, cluster_at(a, at).length);
        if (part(b, std::min(at, b.size()), cluster.size()) != cluster)
            break;
        at += cluster.size();
    }
    return at;
}

} // namespace

void Editor::insert_common(size_t from, std::string_view common) {
    if (!line.replace(from, line.cursor() - from, common, Line::Kind::other))
        no_memory_ = true;
}

void Editor::propose() {
    if (!complete.function)
        return put("\t");
    kestu_edit_proposals_t &proposals = proposals_;
    proposals.bytes.clear();
    proposals.all.clear();
    proposals.place = line.cursor();
    complete.function(&proposals, line.c_text(), line.text().size(), line.cursor(), complete.baton);
    const size_t from = boundary_from(line.text(), std::min(proposals.place, line.cursor()));
    if (proposals.all.empty() || from > line.cursor())
        return;
    std::string_view common = proposals.view(proposals.all[0].text);
    for (const auto &proposal : proposals.all)
        common = part(common, 0, same_front(common, proposals.view(proposal.text)));
    const size_t typed = line.cursor() - from;
    if (proposals.all.size() == 1) {
        insert_common(from, common);
        if (!line.insert(proposals.view(proposals.all[0].behind), Line::Kind::typed))
            no_memory_ = true;
    } else if (common.size() > typed) {
        insert_common(from, common);
    } else {
        listed_ = true;
    }
}

// In columns, down first, below the text; what finds no room is counted.
void Editor::add_list(Frame &frame) const {
    const auto &all = proposals_.all;
    size_t width = 1;
    for (const auto &proposal : all)
        width = std::max(width, width_of(proposals_.view(proposal.shown)));
    width = std::min(width + 2, screen_.columns());
    const size_t columns = std::max<size_t>(screen_.columns() / width, 1);
    const size_t needed = (all.size() + columns - 1) / columns;
    const size_t rows = std::min(needed, std::max<size_t>(screen_.rows() / 2, 1));
    for (size_t row = 0; row < rows; ++row) {
        frame.end_row();
        for (size_t i = row; i < all.size(); i += needed) {
            const std::string_view shown = proposals_.view(all[i].shown);
            frame.add(shown, {});
            if (i + needed < all.size())
                for (size_t used = width_of(shown); used < width; ++used)
                    frame.add(" ", {});
        }
    }
    if (rows == needed)
        return;
    char text[48];
    std::snprintf(text, sizeof text, "(%zu rows more)", needed - rows);
    frame.end_row();
    frame.add(text, style_of(KESTU_EDIT_DIM));
}

} // namespace kestu::edit

using namespace kestu::edit;

void kestu_edit_propose_from(kestu_edit_proposals_t *proposals, size_t place) {
    proposals->place = place;
}

kestu_error_t *kestu_edit_propose(kestu_edit_proposals_t *proposals, const char *text,
                                  const char *shown, const char *behind) {
    const std::string_view texts[] = {text, shown ? shown : text, behind ? behind : ""};
    kestu_edit_proposals_t::Proposal made;
    kestu_edit_proposals_t::Text *const parts[] = {&made.text, &made.shown, &made.behind};
    const size_t begin = proposals->bytes.size();
    bool done = true;
    for (size_t i = 0; i < 3 && done; ++i) {
        *parts[i] = {proposals->bytes.size(), texts[i].size()};
        done = proposals->bytes.append(texts[i]);
    }
    if (done && proposals->all.push(made))
        return nullptr;
    proposals->bytes.cut(begin);
    return no_memory();
}
