#include "common/help.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>
#include <vector>

namespace program {
namespace {

constexpr size_t narrowest = 20;   // narrower terminals break the lines themselves
constexpr size_t widest = 100;     // longer lines are hard to read
constexpr size_t for_columns = 64; // narrower pages have descriptions in lines of their own
constexpr size_t largest_column = 30;
constexpr size_t narrow_column = 6; // fits beside descriptions on any page

using Lines = std::vector<std::string>;

// The words of `text` in lines of `columns`.
Lines filled(const std::string &text, size_t columns) {
    Lines lines;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        if (!lines.empty() && lines.back().size() + 1 + word.size() <= columns)
            lines.back() += " " + word;
        else
            lines.push_back(word);
    return lines;
}

// A page of at most as many columns as its terminal has.
class Page {
  public:
    explicit Page(const Look &look)
        : look_(look),
          columns_(std::clamp(static_cast<size_t>(std::max(look.width, 0)), narrowest, widest)) {}

    void paragraph(const std::string &text, size_t indent = 0) {
        for (const std::string &line : filled(text, columns_ - indent))
            text_ += std::string(indent, ' ') + line + "\n";
    }

    void blank() { text_ += "\n"; }
    void heading(const std::string &text) { text_ += "\n" + bold(text + ":", look_) + "\n"; }

    // What a command is called with, which goes on below itself.
    void usage(const std::string &name, const std::string &arguments) {
        const std::string title = "Usage: ";
        Lines lines = filled(name + " " + arguments, columns_ - title.size() - 2);
        text_ += bold("Usage:", look_) + " " + lines[0] + "\n";
        for (size_t i = 1; i < lines.size(); ++i)
            text_ += std::string(title.size() + 2, ' ') + lines[i] + "\n";
    }

    // A command to type, which may go on in further lines.
    void example(const std::string &command) {
        const Lines lines = filled(command, columns_ - 6);
        for (size_t i = 0; i < lines.size(); ++i)
            text_ += std::string(i == 0 ? 2 : 4, ' ') + lines[i] +
                     (i + 1 < lines.size() ? " \\\n" : "\n");
    }

    struct Entry {
        std::string name;
        std::string description;
    };

    void table(const std::vector<Entry> &entries) {
        size_t column = 0;
        for (const Entry &entry : entries)
            if (entry.name.size() <= largest_column)
                column = std::max(column, entry.name.size());
        for (const Entry &entry : entries)
            row(entry, column);
    }

    std::string text() const { return text_; }

  private:
    void row(const Entry &entry, size_t column) {
        if (columns_ < for_columns && column > narrow_column) {
            text_ += "  " + entry.name.substr(entry.name.find_first_not_of(' ')) + "\n";
            return paragraph(entry.description, 6);
        }
        const size_t indent = column + 4;
        std::string name = "  " + entry.name;
        for (const std::string &line : filled(entry.description, columns_ - indent)) {
            if (name.size() + 2 > indent) {
                text_ += name + "\n";
                name.clear();
            }
            name.resize(indent, ' ');
            text_ += name + line + "\n";
            name.clear();
        }
    }

    const Look look_;
    const size_t columns_;
    std::string text_;
};

// The names that the library of the parser makes up for types say nothing.
std::string value_of(const CLI::Option &option) {
    return option.get_items_expected_max() > 0 ? option.get_type_name() : "";
}

std::string names_of(const CLI::Option &option) {
    std::string names;
    for (const std::string &name : option.get_snames())
        names += (names.empty() ? "-" : ", -") + name;
    if (names.empty())
        names = "    ";
    for (const std::string &name : option.get_lnames())
        names += (names == "    " ? "--" : ", --") + name;
    return names;
}

std::string description_of(const CLI::Option &option) {
    const std::string given = option.get_default_str();
    return option.get_description() + (given.empty() ? "" : " [default: " + given + "]");
}

bool is_shown(const CLI::Option *option) {
    return !option->get_group().empty();
}

bool is_positional(const CLI::Option *option) {
    return option->get_positional();
}

std::string arguments_of(const CLI::App &command) {
    std::string arguments = "[OPTION...]";
    for (const CLI::Option *option : command.get_options(is_positional)) {
        std::string name = option->get_name(true);
        if (option->get_items_expected_max() > 1)
            name += "...";
        arguments += " " + (option->get_required() ? name : "[" + name + "]");
    }
    if (!command.get_subcommands({}).empty())
        arguments = "COMMAND [ARGUMENT...]";
    return arguments;
}

void add_commands(Page &page, const CLI::App &command) {
    std::vector<Page::Entry> entries;
    for (const CLI::App *sub : command.get_subcommands({}))
        if (!sub->get_group().empty())
            entries.push_back({sub->get_name(), sub->get_description()});
    if (entries.empty())
        return;
    page.heading("Commands");
    page.table(entries);
}

void add_options(Page &page, const CLI::App &command) {
    std::vector<Page::Entry> positionals, options;
    for (const CLI::Option *option : command.get_options(is_shown))
        if (is_positional(option))
            positionals.push_back({option->get_name(true), description_of(*option)});
        else
            options.push_back(
                {names_of(*option) + (value_of(*option).empty() ? "" : " ") + value_of(*option),
                 description_of(*option)});
    if (!positionals.empty())
        page.heading("Arguments");
    page.table(positionals);
    page.heading("Options");
    page.table(options);
}

void add_footer(Page &page, const CLI::App &command) {
    std::istringstream lines(command.get_footer());
    std::string paragraph;
    bool examples = false;
    const auto end_paragraph = [&] {
        if (!paragraph.empty() && !examples)
            page.blank();
        page.paragraph(paragraph, examples ? 6 : 0);
        paragraph.clear();
    };
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("$ ")) {
            end_paragraph();
            if (!examples)
                page.heading("Examples");
            examples = true;
            page.example(line.substr(2));
        } else if (line.empty()) {
            end_paragraph();
        } else {
            paragraph += " " + line;
        }
    }
    end_paragraph();
}

void begin_page(Page &page, const CLI::App &command) {
    page.paragraph(command.get_description());
    page.blank();
    page.usage(path_of(command), arguments_of(command));
    add_commands(page, command);
}

} // namespace

std::string path_of(const CLI::App &command) {
    const CLI::App *parent = command.get_parent();
    return (parent ? path_of(*parent) + " " : "") + command.get_name();
}

std::string usage_of(const CLI::Option &option) {
    const std::string value = value_of(option);
    return option.get_name() + (value.empty() ? "" : " ") + value;
}

std::string help_page(const CLI::App &command, const Look &look) {
    Page page(look);
    begin_page(page, command);
    add_options(page, command);
    if (!command.get_parent()) {
        page.heading("Exit status");
        page.table({{"0", "everything was done"},
                    {"1", "something failed, or did not match; what and why is on standard error"},
                    {"2", "the command line is wrong, and nothing was done"}});
    }
    add_footer(page, command);
    return page.text();
}

std::string short_help(const CLI::App &command, const Look &look) {
    Page page(look);
    begin_page(page, command);
    page.blank();
    page.paragraph("'" + path_of(command) + " --help' tells more.");
    return page.text();
}

} // namespace program
