// `explain`: prints facts about one value in a file, one on each line. The command follows the path
// a second time, key by key: the keys give the path in the form of references, and the object
// before the last key may have a rule for the value.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/csourcemap.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/output/diagnostic.h"
#include "tools/qrv/output/escaped.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/search/at_path.h"
#include "tools/qrv/search/sharing.h"
#include "tools/qrv/verify/attempt.h"
#include "tools/qrv/verify/mismatch.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

namespace {

constexpr char const *help = "Example:\n"
                             "  qrv explain device.attr sensors/0/calibration\n"
                             "explain prints a line for each of these that applies:\n"
                             "  path      the path, as in a reference\n"
                             "  type      its type, and where the file declares that type\n"
                             "  name      the name of a type\n"
                             "  constant  the name of a constant, such as #nil\n"
                             "  place     line:column of what the file contains for the value\n"
                             "  rule      what the type of the containing object requires\n"
                             "  default   the default of that rule\n"
                             "  choice    the choice of a choice value\n"
                             "  choices   the choices of its type\n"
                             "  entries   the number of entries\n"
                             "  layout    whether the entries are written on one line or on many\n"
                             "  comment   a line of its comment\n"
                             "  shared    another path to the same value, at most eight of them";

constexpr size_t most_shared = 8;
constexpr size_t longest_line = 400; // for paths and lists

// The end of a path.
struct cGoal {
    objref value;
    objref owner; // the object that has the attribute
    objref key;
    std::string path; // "/a/0"
};

// The library has accepted the path before, so its tokens are alternately keys and separators.
cGoal goal_of(objref const &top, std::string const &path, objref const &value) {
    std::istringstream is(path);
    is.imbue(std::locale::classic());
    cAttrScan scan(is, false);
    cAttrLiteral token;
    scan.gettok(token);
    if (token.code == '/') scan.gettok(token);
    cGoal goal{value, top, nullptr, ""};
    objref at = top;
    while (at && cat::read_stdtype(token.code, token.text.c_str(), goal.key) && goal.key) {
        goal.path += '/' + cat::as_text(goal.key);
        goal.owner = std::exchange(at, at->getattr(goal.key));
        if (scan.gettok(token) == tkEof) break;
        scan.gettok(token);
    }
    return goal;
}

class cExplanation {
  public:
    cExplanation(objref const &top, cGoal goal, std::string const &bytes, cat::SourceMap const &map)
        : top_(top), goal_(std::move(goal)), bytes_(bytes), map_(map),
          sharing_(top, {goal_.value.get(), &goal_.value->type(), &goal_.owner->type()}) {}
    cExplanation(cExplanation const &) = delete;
    cExplanation &operator=(cExplanation const &) = delete;
    ~cExplanation() = default;

    std::string text() {
        bool const constant = is_constant(*goal_.value);
        std::vector<std::string> others;
        if (!constant) others = sharing_.paths(goal_.value.get(), most_shared + 2);
        others.erase(std::remove(others.begin(), others.end(), goal_.path), others.end());
        line("path", shortened(goal_.path, longest_line));
        print_type();
        if (constant) line("constant", shown(goal_.value));
        print_place();
        print_rule();
        print_choice();
        print_container();
        if (!constant) print_comment();
        print_shared(others);
        return std::move(text_);
    }

  private:
    void line(std::string key, std::string const &text) {
        key.resize(10, ' ');
        text_ += key + escaped(text) + "\n";
    }

    // " (declared at /T)", or "" if the tree doesn't declare the type.
    std::string declared(cObj const &type, std::string const &suffix = {}) const {
        std::vector<std::string> const paths = sharing_.paths(&type, 1);
        if (paths.empty()) return "";
        return " (declared at " + shortened(paths[0] + suffix, longest_line) + ")";
    }

    void print_type() {
        cTypeObj const &type = goal_.value->type();
        line("type", shortened(type.name(), longest_line) + declared(type));
        if (goal_.value->is_type())
            line("name", shortened(static_cast<cTypeObj &>(*goal_.value).name(), longest_line));
    }

    // Prints the position of the value. A set keeps the first of equal values, a repeated key the
    // last.
    void print_place() {
        std::vector<cat::SourceEntry> const entries = map_.spans(*top_, goal_.path);
        if (entries.empty()) return;
        cat::SourceEntry const &entry =
            cObj::is_set(goal_.owner) ? entries.front() : entries.back();
        line("place", line_and_column(place_after({}, bytes_, entry.value.begin)));
    }

    // An object keeps the rules of its creation, even if its type is declared again later.
    void print_rule() {
        if (auto const *const spec = dynamic_cast<cAttspec const *>(goal_.value.get()))
            return print_specification(*spec, "");
        auto *const owner = dynamic_cast<cMapObj *>(goal_.owner.get());
        if (!owner || !goal_.key) return;
        specref const spec = owner->attspec(goal_.key);
        if (spec == cAttspec::nilspec()) return;
        objref now;
        if (auto const *const all =
                dynamic_cast<cMapObj const *>(objref(owner->type().tmember("attspec")).get()))
            now = all->datamap().getitem(goal_.key);
        bool const same = now.get() == spec.get();
        print_specification(*spec,
                            same ? declared(owner->type(), '/' + cat::as_text(goal_.key)) : "");
    }

    void print_specification(cAttspec const &spec, std::string const &where) {
        std::string rule;
        if (spec.is_required()) rule += "required, ";
        if (spec.is_implied()) rule += "implied, ";
        if (spec.is_fixref()) rule += "fixed, ";
        rule += spec.get_type() ? "only " + shortened(spec.get_type()->name()) : "any type";
        line("rule", rule + where);
        line("default", spec.is_default() ? shown(spec.get_default()) : "none");
    }

    void print_choice() {
        auto const *const value = dynamic_cast<cChoiceVal const *>(goal_.value.get());
        if (!value) return;
        line("choice", value->is_undefined() ? "none" : cat::as_text(value->key()));
        objref const choices = value->type().tmember("choices");
        if (!cObj::is_good(choices)) return;
        std::string keys;
        for (cIterObj it = choices->begin(); it.valid() && keys.size() <= longest_line; ++it)
            keys.append(keys.empty() ? "" : ", ").append(cat::as_text(it.key()));
        line("choices", keys.empty() ? "none" : shortened(keys, longest_line));
    }

    // Prints the entries of a container, or of a type's declaration. Choices have a different
    // layout.
    void print_container() {
        objref entries = goal_.value, layout = goal_.value;
        if (entries->is_type()) {
            auto const &type = static_cast<cTypeObj const &>(*entries);
            bool const attributes = &type.type() == &cat::typetype_attlist();
            entries = type.tmember(attributes ? "attspec" : "choices");
            if (!attributes) layout = entries;
        }
        auto const *const map = dynamic_cast<cMapObj const *>(entries.get());
        if (!map) return;
        line("entries", std::to_string(map->size()));
        line("layout", cat::wformat(*layout)[0] == 's' ? "one line" : "many lines");
    }

    void print_comment() {
        std::string comment;
        if (!goal_.value->get_comment(comment)) return;
        std::istringstream is(comment);
        for (std::string part; std::getline(is, part);) {
            size_t const first = part.find_first_not_of(" \t\r");
            if (first != part.npos) line("comment", part.substr(first));
        }
    }

    void print_shared(std::vector<std::string> const &others) {
        for (size_t i = 0; i < std::min(others.size(), most_shared); ++i)
            line("shared", shortened(others[i], longest_line));
        if (others.size() > most_shared) line("shared", "and more");
    }

    objref const top_;
    cGoal goal_;
    std::string const &bytes_;
    cat::SourceMap const &map_;
    cSharing sharing_;
    std::string text_;
};

void explain(std::string const &path, std::string const &bytes, cMessages &messages,
             cReply &reply) {
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    objref value;
    if (!reading.clean || !find_at(reading.value, path, value, messages)) return;
    reply.status = value ? exit_done : exit_found;
    if (!value) return report_absent(path, messages);
    cAttempt const ignored([&] { // ignores the errors of values that can't be written
        cat::ExactText const exact;
        cGoal const goal = goal_of(reading.value, path, value);
        reply.text = cExplanation(reading.value, goal, bytes, map).text();
        return true;
    });
}

void add_arguments(cArguments &arguments, cQuestion &question) {
    arguments.required("FILE", question.file, "the file");
    arguments.required("PATH", question.about, "keys separated by /");
    add_max_errors(arguments, question.max_errors);
}

cCommand const command(60, "explain", "Print what is known about one value", help,
                       define<cQuestion, add_arguments, answer<explain>>);

} // namespace
