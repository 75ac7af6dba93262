// `set`: runs statements such as "a/b = 1; list << 2" on the value of a file. Each statement is
// tested and run by the library separately; then the stored value is compared with the given one.
// If a statement fails, the command reports it, still tries the others, and writes nothing.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cintformat.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/editing/entries.h"
#include "tools/qrv/editing/obstacle.h"
#include "tools/qrv/editing/rewrite.h"
#include "tools/qrv/editing/statements.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/verify/attempt.h"
#include "tools/qrv/verify/mismatch.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>

namespace {

struct cOptions : cWriteOptions {
    std::string file;
    std::vector<std::string> statements;
    std::vector<std::string> more;   // statements
    std::vector<std::string> files;  // files with statements
    std::vector<std::string> values; // NAME=VALUE
    bool no_create = false;          // a missing level is an error
    bool convert = false;            // store values even if a conversion changes them
};

constexpr char const *help =
    "Statements are separated by ; or , and run in order, those of --expression and --file last:\n"
    "  path = value    assign the value to what is there, or create an entry\n"
    "  path &= value   replace a value of any type, or create an entry\n"
    "  path += value   add to a number or a string; add to a map the keys that it lacks\n"
    "  path << value   append to a vector or a set\n"
    "A path is keys separated by /. A value is written as in a file. A string that is not a\n"
    "single word needs quotes, so it is best to put all STATEMENTS in single quotes.\n"
    "\n"
    "Examples:\n"
    "  qrv set device.attr 'bus/baud = 9600; bus/parity = even'\n"
    "  qrv set -i device.attr 'location/room = \"0.15\"'      # replaces the file\n"
    "  qrv set -i device.attr 'installed &= #false'         # #true and #nil need &=\n"
    "  qrv set device.attr 'supply/phases << N; bus += {dialect= 2; retries= 5}'\n"
    "  qrv set -o new.attr device.attr 'spare/fan/type = axial'\n"
    "\n"
    "set compares what it stored with what was given, and refuses a number that would change,\n"
    "such as 1.9 in an int. If several paths lead to one value, by #cRef, then = changes it\n"
    "at all of them and &= at one. &= preserves the comment. STATEMENTS cannot contain\n"
    "comments. Errors are reported as statements:line:column. After an error nothing is\n"
    "written and the exit code is 2.\n"
    "\n"
    "Only what changes is written: all other bytes of the file stay as they are. With --reformat\n"
    "set reports each comment that would be lost; then -i and -o need --force.\n"
    "\n"
    "In a script give strings by --arg. $NAME is always one string, also as a key, and VALUE can\n"
    "contain any characters. Inside quotes $NAME is plain text.\n"
    "  qrv set -i device.attr --arg \"room=$room\" 'location/room = $room'";

size_t count_of(objref const &value) {
    auto const *const map = dynamic_cast<cMapObj const *>(value.get());
    return map ? map->datamap().used() : 0;
}

// One statement, from the test of its value to the comparison of what was stored.
class cAssignment {
  public:
    cAssignment(objref const &root, cStatement const &statement, cOptions const &options,
                cMessages &messages)
        : root_(root), statement_(statement), options_(options), messages_(messages) {}
    cAssignment(cAssignment const &) = delete;
    cAssignment &operator=(cAssignment const &) = delete;
    ~cAssignment() = default;

    void run() {
        before_ = at_path();
        count_ = count_of(before_);
        number_ = number_of(before_);
        if (!can_be_written() || !can_be_assigned() || !apply()) return;
        now_ = at_path();
        if (statement_.operation == tkAddAssign)
            test_sum();
        else if (statement_.operation == tkShiftLeft)
            test_appended();
        else
            test_stored();
        if (statement_.operation == tkAndAssign) carry_comment();
    }

  private:
    objref at_path() const {
        objref value;
        cAttempt const ignored([&] {
            value = root_->getattrp(statement_.path);
            return true;
        });
        return cObj::is_good(value) ? value : objref();
    }

    bool refuse(cPlace place, std::string const &text, std::string const &advice,
                unsigned code = 0) {
        messages_.error(place, shortened(statement_.path) + ": " + text, code);
        if (!advice.empty()) messages_.note(place, advice);
        return false;
    }
    bool refuse_value(std::string const &text, std::string const &advice) {
        return refuse(statement_.value_place, text, advice);
    }

    bool can_be_written() {
        cat::ExactText const exact;
        std::string text;
        cAttempt const writing([&] {
            text = cat::as_text(statement_.value);
            return true;
        });
        for (cAttemptError const &error : writing.errors)
            refuse(statement_.value_place, error.text, "", error.code);
        return writing.errors.empty();
    }

    // Reports an existing value that cannot be assigned to.
    bool can_be_assigned() {
        if (statement_.operation != '=' || !before_ || !is_constant(*before_)) return true;
        std::string const name = shown(before_);
        return refuse(statement_.place, "it holds " + name + ", which cannot be assigned",
                      "&= replaces it: " + shortened(statement_.path) +
                          " &= " + shown(statement_.value));
    }

    bool apply() {
        cAttempt const attempt([&] {
            return root_->setattrp(statement_.path + " " + statement_.operator_text,
                                   statement_.value, !options_.no_create);
        });
        if (attempt.done && attempt.errors.empty()) return true;
        if (before_ && statement_.operation == '=' && report_mismatches(before_, false))
            return false;
        if (auto const found = obstacle_at(root_, statement_.path))
            return refuse(statement_.place, found->text, found->advice);
        bool const creates = statement_.operation == '=' || statement_.operation == tkAndAssign;
        if (!before_ && !creates)
            return refuse(statement_.place, "nothing is there for " + statement_.operator_text,
                          "create a value first, with = or &=");
        for (cAttemptError const &error : attempt.errors)
            refuse(statement_.place, error.text, "", error.code);
        return explain(attempt.errors.empty());
    }

    // Adds the reason and advice after the library's errors; if `silent`, reports them as the
    // error.
    bool explain(bool silent) {
        std::string const &op = statement_.operator_text;
        std::string advice;
        std::string text = kind_of(statement_.value) + " cannot be stored there by " + op;
        if (statement_.operation == tkShiftLeft && cObj::is_set(before_))
            text = "the set holds " + shown(statement_.value) + " already";
        else if (!before_ && options_.no_create)
            advice = "without --no-create missing levels are created";
        else if (before_)
            advice = "it holds " + kind_of(before_);
        if (silent) return refuse(statement_.place, text, advice);
        if (!advice.empty()) messages_.note(statement_.place, advice);
        return false;
    }

    void test_stored() {
        if (now_)
            report_mismatches(now_, true);
        else
            refuse_value("nothing is stored there", "");
    }

    // Reports the parts of the value that were not stored. `done`: the library has reported
    // success. Returns whether there are any.
    bool report_mismatches(objref const &stored, bool done) {
        bool any = false;
        for (cMismatch const &found : mismatches(stored, statement_.value, cStored::assigned)) {
            bool const conversion =
                found.kind == cMismatch::number || (found.kind == cMismatch::type && done);
            if (conversion && options_.convert) continue;
            std::string const at = found.path.empty() ? "" : "at " + shortened(found.path) + ": ";
            refuse_value(at + found.text, advice(conversion));
            any = true;
        }
        return any;
    }

    std::string advice(bool conversion) const {
        std::string const convert = conversion ? "--convert stores the changed value" : "";
        if (auto const found = obstacle_at(root_, statement_.path))
            return found->text + (conversion ? "; " + convert : "");
        if (statement_.operation == tkAndAssign) return convert;
        return conversion ? "&= replaces it and its type; " + convert
                          : "&= replaces a value of any type";
    }

    // A string that is added to an intf is read as a number.
    void test_text_sum() {
        std::string const text = cat::as_string(statement_.value);
        std::optional<int> const other = misread(text);
        int number = 0;
        cIntFormat(number, cIntFormat::fmtDec).set_str(text.c_str());
        if (other && !options_.convert)
            refuse_value("intf reads " + shown(statement_.value) + " as " + std::to_string(*other),
                         "--convert allows it");
        else
            test_number(*number_, number);
    }

    void test_sum() {
        std::optional<double> const given = number_of(statement_.value);
        if (number_ && given) return test_number(*number_, *given);
        if (number_ && &statement_.value->type() == &cat::type_string()) return test_text_sum();
        if (!cObj::is_map(now_) && !cObj::is_vector(now_) && !cObj::is_set(now_)) return;
        if (!statement_.value->is_container())
            refuse_value("it is " + kind_of(now_) + ", and += adds the values of another container",
                         "<< appends one value");
        else if (!cObj::is_map(now_) && cObj::is_map(statement_.value))
            refuse_value("it is " + kind_of(now_) + "; the keys would be lost",
                         "add a vector: [ ... ]");
    }

    void test_number(double before, double given) {
        std::optional<double> const sum = number_of(now_);
        bool const is_int = &now_->type() == &cat::type_int() ||
                            dynamic_cast<cIntFormat const *>(now_.get()) != nullptr;
        if (is_int && std::trunc(given) == given) {
            if (sum != before + given)
                refuse_value("the sum is too large for " + kind_of(now_), "&= stores a double");
        } else if (!sum || !std::isfinite(*sum)) {
            refuse_value("the sum is too large for " + kind_of(now_), "&= stores a double");
        } else if (!options_.convert && !accepts(now_, given)) {
            refuse_value(shown(statement_.value) + " would be cut before it is added to " +
                             kind_of(now_),
                         "--convert allows it");
        }
    }

    void test_appended() {
        if (count_of(now_) != count_ + 1)
            refuse_value("nothing was appended to " + kind_of(now_), "");
    }

    // The new value gets the comment of the replaced one. A constant exists once and has no
    // comment.
    void carry_comment() {
        std::string comment;
        if (before_ && now_ && before_ != now_ && before_->get_comment(comment) &&
            !is_constant(*now_))
            now_->set_comment(comment, false);
    }

    objref root_;
    cStatement const &statement_;
    cOptions const &options_;
    cMessages &messages_;
    objref before_, now_;          // the value at the path, or null
    size_t count_ = 0;             // the number of values that before_ held
    std::optional<double> number_; // the number that before_ was
};

// Statements from one place.
struct cGiven {
    std::string name; // for messages
    std::string text;
};

// All statements in order; empty, with messages, if a file can't be read.
std::optional<std::vector<cGiven>> given_by(cOptions const &options) {
    std::vector<cGiven> all;
    std::vector<std::string> texts = options.statements;
    texts.insert(texts.end(), options.more.begin(), options.more.end());
    for (std::string const &text : texts)
        all.push_back(
            {texts.size() == 1 ? "statements" : "statements " + std::to_string(all.size() + 1),
             text});
    for (std::string const &file : options.files) {
        cMessages messages(file, options.max_errors);
        std::string bytes;
        if (file == "-" && options.file == "-")
            messages.error("the standard input cannot be both FILE and the file of statements");
        else if (read_bytes(file, bytes, messages)) {
            cut_mark(bytes);
            all.push_back({file, bytes});
            continue;
        }
        put_lines(messages.text());
        return std::nullopt;
    }
    return all;
}

cNamedValues named_by(cOptions const &options) {
    cNamedValues named;
    for (std::string const &value : options.values) {
        size_t const end = value.find('=');
        named.values[value.substr(0, end)] = value.substr(end + 1);
    }
    return named;
}

bool set_all(objref const &root, std::vector<cGiven> const &given, cOptions const &options,
             std::string &errors) {
    cNamedValues named = named_by(options);
    bool good = true;
    for (auto const &[name, text] : given) {
        cMessages messages(name, options.max_errors);
        cStatements statements(text, named, options.convert, messages);
        cStatement statement;
        while (statements.next(statement)) {
            statement.value = declared_at(root, statement.path, statement.value);
            cAssignment(root, statement, options, messages).run();
        }
        errors += messages.text();
        good = good && messages.count() == 0;
    }
    cMessages unused("statements", options.max_errors);
    for (auto const &[name, value] : named.values)
        if (good && !named.used.contains(name))
            unused.error("--arg " + shortened(name) + " is not used");
    errors += unused.text();
    return good && unused.count() == 0;
}

int run(cOptions const &options) {
    std::optional<std::vector<cGiven>> const given = given_by(options);
    if (!given) return exit_failed;
    return rewrite(options.file, options, [&](cChanging const &file, std::string &errors) {
        return set_all(file.value, *given, options, errors);
    });
}

std::string wrong_value(std::string const &value) {
    size_t const end = value.find('=');
    std::string const name = value.substr(0, end);
    bool const is_name = !name.empty() && !std::isdigit(static_cast<unsigned char>(name[0])) &&
                         std::all_of(name.begin(), name.end(), [](unsigned char c) {
                             return c < 128 && (std::isalnum(c) || c == '_');
                         });
    return is_name && end != value.npos ? "" : "NAME=VALUE is needed, not " + value;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.repeated("STATEMENTS", options.statements, "paths, operators and values");
    arguments.repeated("-e,--expression=STATEMENTS", options.more, "more statements");
    arguments.repeated("-f,--file=FILE", options.files,
                       "a file of statements; - is standard input");
    arguments.repeated("--arg", options.values, {"NAME=VALUE", wrong_value},
                       "$NAME in statements is this string");
    arguments.need("set", "STATEMENTS, --expression or --file", [&options] {
        return options.statements.empty() && options.more.empty() && options.files.empty();
    });
    arguments.flag("--no-create", options.no_create, "do not create missing levels");
    add_convert(arguments, options.convert);
    add_destination(arguments, options);
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(20, "set", "Set values at paths", help,
                       define<cOptions, add_arguments, run>);

} // namespace
