// `merge`: copies the value of one file onto that of another, by attrcopy with its command of three
// letters. Then verifies the result for each key.

#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/csourcemap.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/editing/rewrite.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/verify/attempt.h"
#include "tools/qrv/verify/mismatch.h"

#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace {

struct cOptions : cWriteOptions {
    std::string target;
    std::string source;
    std::string commands = "-xx";
    bool convert = false;
};

constexpr char const *help =
    "There is one letter for each class of keys:\n"
    "  only in TARGET   -  keep the value\n"
    "                   0  remove it\n"
    "  in both          a  assign SOURCE's value\n"
    "                   s  replace it by SOURCE's value\n"
    "                   x  merge: maps by -xx, vectors and sets by appending, all else like a\n"
    "                   -  keep the value\n"
    "                   0  remove it\n"
    "  only in SOURCE   s  store the value\n"
    "                   x  store it; append it to vectors and sets\n"
    "                   -  do not store it\n"
    "The letter ? stands for the letter that TARGET's type defines.\n"
    "\n"
    "Examples:\n"
    "  qrv merge device.attr site.attr                    # all of SOURCE; removes nothing\n"
    "  qrv merge --commands=-a- device.attr site.attr     # new values for existing keys\n"
    "  qrv merge --commands=0ax device.attr site.attr     # exactly SOURCE's keys\n"
    "\n"
    "merge refuses a number that would change, such as 1.9 in an int. If anything fails,\n"
    "nothing is written and the exit code is 2.\n"
    "\n"
    "Only what changes is written: all other bytes of TARGET stay as they are. A key that is\n"
    "removed takes its comments with it. Keys that only SOURCE has bring their comments, and so\n"
    "do values that replace a value without a comment. A comment that an empty line separates\n"
    "from the entry below, such as the title of a section, comes if that entry is new in TARGET;\n"
    "the comments before the first entry of SOURCE and after its last one do not. With\n"
    "--reformat merge reports each comment of TARGET that would be lost; then -i and -o need\n"
    "--force.";

// Is this the error of assigning a constant or a choice type to itself?
bool is_self_assignment(cAttemptError const &error) {
    return error.kind == cat::ErrorKind::object_const ||
           (error.kind == cat::ErrorKind::missing_method && error.names.name == "assign" &&
            error.names.type == "choice");
}

// A value with the text from which it was read.
struct cText {
    objref value;
    std::string const &bytes;
    cat::SourceMap const &map;
};

// The position of the value at a path; of a repeated key, the last one.
std::optional<cPlace> place_of(std::string const &path, cText const &text) {
    std::vector<cat::SourceEntry> const entries = text.map.spans(*text.value, path);
    if (entries.empty()) return std::nullopt;
    return place_after({}, text.bytes, entries.back().value.begin);
}

class cMerge {
  public:
    cMerge(objref const &target, cText const &source, cOptions const &options, cMessages &messages)
        : target_(target), source_(source.value), text_(source), options_(options),
          letters_(options.commands), messages_(messages) {}
    cMerge(cMerge const &) = delete;
    cMerge &operator=(cMerge const &) = delete;
    ~cMerge() = default;

    void run() {
        if (!same_kind()) return;
        list_keys();
        complete_letters();
        cAttempt const attempt([&] { return target_->attrcopy(*source_, letters_.c_str()); });
        done_ = attempt.done && attempt.errors.empty();
        if (cObj::is_map(target_))
            test_map();
        else if (cObj::is_vector(target_))
            test_vector();
        report_found();
        if (messages_.count() == 0 && !done_) test_failure(attempt);
    }

  private:
    struct cItem {
        objref key;
        objref before; // the target's value before, or null
    };

    bool same_kind() {
        bool const known =
            cObj::is_map(target_) || cObj::is_vector(target_) || cObj::is_set(target_);
        if (known && &target_->type() == &source_->type()) return true;
        messages_.error("its value is " + kind_of(source_) + ", that of " +
                        shortened(options_.target) + " " + kind_of(target_) +
                        "; only two maps, two vectors or two sets can be merged");
        return false;
    }

    static cAttrHash const &hash_of(objref const &container) {
        return static_cast<cMapObj const &>(*container).datamap();
    }

    // Called if all values are as they should be, but the copy failed. Assigning a constant or a
    // choice type to itself fails, and that is harmless: test_types() has reported declarations
    // that differ.
    void test_failure(cAttempt const &attempt) {
        for (cAttemptError const &error : attempt.errors) {
            if (is_self_assignment(error)) continue;
            messages_.error(error.text, error.code);
        }
        bool const harmless = !cObj::is_set(target_);
        if (!harmless && messages_.count() == 0) messages_.error("not all values could be merged");
    }

    void list_keys() {
        cAttrHash const &hash = hash_of(target_);
        for (cIterObj it = source_->begin(); it.valid(); ++it) {
            cAttrNode const *const node = hash.find(it.key());
            items_.push_back({it.key(), node ? node->valref() : objref()});
        }
        old_size_ = hash.used();
    }

    // Replaces each ? by the letter of the target's type.
    void complete_letters() {
        std::string const own = cat::as_string(target_->gmember("cpcommands"));
        for (size_t i = 0; i < letters_.size() && i < own.size(); ++i)
            if (letters_[i] == '?') letters_[i] = own[i];
    }

    void test_map() {
        for (cItem const &item : items_) test_key(item, source_->getattr(item.key));
        if (letters_[0] != '0') return;
        for (cIterObj it = target_->begin(); it.valid(); ++it)
            if (!hash_of(source_).find(it.key())) report_left(it.key());
    }

    // Tests mostly the size: values that were stored by index may replace values appended before.
    void test_vector() {
        size_t both = 0;
        for (cItem const &item : items_) both += item.before ? 1 : 0;
        size_t size = 0;
        if (letters_[0] != '0') size += old_size_ - both;
        if (letters_[1] != '0') size += both;
        if (letters_[1] == 'x') size += both;
        if (letters_[2] == 's' || letters_[2] == 'x') size += items_.size() - both;
        if (hash_of(target_).used() != size)
            messages_.error("not all values could be merged by " + letters_ + ": " +
                            std::to_string(hash_of(target_).used()) + " instead of " +
                            std::to_string(size));
        if (letters_[1] != 'a' && letters_[1] != 's') return;
        for (cItem const &item : items_)
            if (item.before) test_key(item, source_->getattr(item.key));
    }

    void test_key(cItem const &item, objref const &given) {
        objref const now = target_->getattr(item.key);
        switch (letters_[item.before ? 1 : 2]) {
        case 'a':
            return test_value(item, now, given, cStored::assigned);
        case 'x':
            return test_value(item, now, given, item.before ? cStored::merged : cStored::assigned);
        case 's':
            if (item.before) keep_comment(item.before, now);
            return test_value(item, now, given, cStored::assigned);
        case '0':
            if (cObj::is_good(now)) report_left(item.key);
            return;
        default:
            return;
        }
    }

    void test_value(cItem const &item, objref const &now, objref const &given, cStored how) {
        cat::ExactText const exact;
        for (cMismatch const &found : mismatches(now, given, how)) {
            bool const conversion =
                found.kind == cMismatch::number || (found.kind == cMismatch::type && done_);
            if (options_.convert && conversion) continue;
            report('/' + cat::as_text(item.key) + found.path,
                   found.text + (conversion ? "; --convert allows it" : ""));
        }
    }

    // The new value gets the comment of the replaced one.
    static void keep_comment(objref const &before, objref const &now) {
        std::string comment;
        if (before != now && before->get_comment(comment) && !is_constant(*now))
            now->set_comment(comment, true);
    }

    void report_left(objref const &key) { report('/' + cat::as_text(key), "it cannot be removed"); }

    void report(std::string const &path, std::string const &text) {
        if (found_.size() < static_cast<size_t>(messages_.limit()))
            found_.emplace_back(path, text);
        else
            ++found_beyond_;
    }

    void report_found() {
        for (auto const &[path, text] : found_) {
            std::optional<cPlace> const place = place_of(path, text_);
            std::string const message = "at " + shortened(path) + ": " + text;
            if (place)
                messages_.error(*place, message);
            else
                messages_.error(message);
        }
        messages_.more(found_beyond_);
    }

    objref target_, source_;
    cText const &text_; // the source
    cOptions const &options_;
    std::string letters_;
    cMessages &messages_;
    std::vector<cItem> items_; // the source's keys, in order
    size_t old_size_ = 0;
    bool done_ = false;                                      // the library has reported success
    std::vector<std::pair<std::string, std::string>> found_; // path and text of each error
    size_t found_beyond_ = 0;                                // errors that are only counted
};

struct cDeclared {
    std::string text;
    std::string path;
};

// The types that a value declares, by name.
using cTypes = std::map<std::string, cDeclared>;

// Collects the types that a value declares. For a type with several paths the first one counts.
class cTypeWalk {
  public:
    static cTypes types_in(objref const &value) {
        cTypeWalk walk;
        cat::ExactText const exact;
        walk.visit(value);
        return std::move(walk.types_);
    }

  private:
    void visit(objref const &value) {
        if (!value) return;
        if (value->is_type()) {
            types_.try_emplace(static_cast<cTypeObj const &>(*value).name(),
                               cDeclared{cat::as_text(value), path_});
            return;
        }
        bool const holder = cObj::is_map(value) || cObj::is_vector(value) || cObj::is_set(value);
        if (!holder || !visited_.insert(value.get()).second) return;
        for (cIterObj it = value->begin(); it.valid(); ++it) {
            if (!it.valref() || !(it.valref()->is_container() || it.valref()->is_type())) continue;
            size_t const size = path_.size();
            path_ += '/' + cat::as_text(it.key());
            visit(it.valref());
            path_.resize(size);
        }
    }

    cTypes types_;
    std::string path_;
    std::set<cObj const *> visited_;
};

std::string shown_place(std::string const &name, cText const &text, std::string const &path) {
    std::optional<cPlace> const place = place_of(path, text);
    return place ? name + ":" + line_and_column(*place) : name + ", " + shortened(path);
}

// Reports types that both files declare differently. Both files were read into one set of types, in
// which the later declaration holds for all values.
void test_types(cTypes const &target, cText const &target_text, cText const &source,
                cOptions const &options, cMessages &messages) {
    for (auto const &[name, declared] : cTypeWalk::types_in(source.value)) {
        auto const other = target.find(name);
        if (other == target.end() || other->second.text == declared.text) continue;
        messages.error("type '" + shortened(name) + "' is declared with different content at " +
                       shown_place(options.source, source, declared.path) + " and at " +
                       shown_place(options.target, target_text, other->second.path));
    }
}

bool merge_all(cChanging const &file, std::string const &source, cOptions const &options,
               std::string &errors) {
    cMessages messages(options.source, options.max_errors);
    cTypes const types = cTypeWalk::types_in(file.value);
    cat::SourceMap const map;
    cReading const reading = read_value(source, messages);
    if (reading.clean && reading.after)
        messages.error(*reading.after, "text after the first value is not read");
    cText const text{reading.value, source, map};
    if (messages.count() == 0)
        test_types(types, {file.value, file.bytes, file.map}, text, options, messages);
    if (messages.count() == 0 && file.edit) file.edit->bring(source, map, reading.value);
    if (messages.count() == 0) cMerge(file.value, text, options, messages).run();
    errors = messages.text();
    return messages.count() == 0;
}

int run(cOptions const &options) {
    cMessages messages(options.source, options.max_errors);
    std::string bytes;
    if (options.source == "-" && options.target == "-")
        messages.error("only one of the two files can be the standard input");
    else
        read_bytes(options.source, bytes, messages);
    cut_mark(bytes);
    put_lines(messages.text());
    if (messages.count() != 0) return exit_failed;
    return rewrite(options.target, options, [&](cChanging const &file, std::string &errors) {
        return merge_all(file, bytes, options, errors);
    });
}

// The error in the letters for `merge`, or "".
std::string wrong_commands(std::string const &commands) {
    static constexpr char const *known[] = {"-0?", "-asx0?", "-sx?"};
    static constexpr char const *keys[] = {"only in TARGET", "in both", "only in SOURCE"};
    if (commands.size() != 3) return "three letters are needed, one for each class of keys";
    for (size_t i = 0; i < 3; ++i)
        if (std::string_view(known[i]).find(commands[i]) == std::string_view::npos)
            return std::string("'") + commands[i] + "' is not a letter for keys " + keys[i] +
                   "; the letters are " + known[i];
    return "";
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("TARGET", options.target, "the file to merge into");
    arguments.required("SOURCE", options.source, "the file to merge");
    arguments.option("--commands", options.commands, {"LETTERS", wrong_commands},
                     "what happens to keys: three letters");
    add_convert(arguments, options.convert);
    add_destination(arguments, options);
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(30, "merge", "Merge the value of a file into another's", help,
                       define<cOptions, add_arguments, run>);

} // namespace
