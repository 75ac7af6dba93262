#include "tests/sweep/sweep.h"

#include <regex>

namespace sweep_test {
namespace {

std::string words_of(cEdit const &edit) {
    std::string text;
    for (std::string const &word : edit.command)
        if (word != "@") text += (text.empty() ? "" : " ") + word;
    return text;
}

} // namespace

cTable sweep(std::string const &text, size_t every, cTool const &tool,
             std::function<void(std::string const &)> const &complain) {
    cTable table;
    for_edits(text, every, [&](cEdit const &edit) {
        auto const complaint = [&](std::string const &what) {
            complain(words_of(edit) + ": " + what);
        };
        cRun const done = tool(edit.command, text);
        if (done.status != 0 && !edit.refusal.empty() &&
            std::regex_search(done.err, std::regex(edit.refusal)))
            return;
        cRow &row = table[edit.kind];
        ++row.edits;
        if (done.status != 0) {
            ++row.refused;
            return complaint("refused: " + done.err);
        }
        if (tree_of(done.out) != edit.tree) {
            ++row.wrong;
            complaint("another tree");
        }
        std::optional<size_t> const lines = changed_lines(text, done.out, edit.lines);
        row.lines += lines.value_or(0);
        if (!lines)
            complaint("changed another line");
        else if (*lines > edit.meant || (edit.kind == changed && *lines != edit.meant))
            complaint("changed " + std::to_string(*lines) + " lines instead of " +
                      std::to_string(edit.meant));
        std::vector<std::string> const stay = comments(text, edit.own), now = comments(done.out);
        size_t const gone = lost(stay, now);
        row.lost += gone;
        if (gone > 0)
            complaint("lost " + std::to_string(gone) + " comments");
        else if (now != stay && !edit.moves_comments)
            complaint("moved or kept a comment");
    });
    return table;
}

} // namespace sweep_test
