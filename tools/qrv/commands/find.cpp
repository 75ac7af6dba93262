// `find`: prints the entries of a file whose key or value matches a pattern as a whole. Each is
// printed as a statement for `set`, "path = value;", so that `set` accepts the whole output. An
// entry below a key that no path can have is printed with a warning.
//
// The walk stores the current path on an explicit stack, and creates its text only for entries that
// match. If several paths lead to a value, its contents and text are examined only at the first of
// them; keys match at all paths. Declarations of types are skipped: `set` does not accept them, and
// `types` lists them. Containers are printed on one line, without comments; to this end the layout
// of all containers is changed once.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cintvalf.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/output/raised.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/search/pattern.h"
#include "tools/qrv/search/sharing.h"
#include "tools/qrv/verify/mismatch.h"

#include <unordered_set>
#include <utility>
#include <vector>

namespace {

struct cOptions {
    std::string file;
    std::string pattern;
    bool first = false; // use the first alternative that matches, not the longest
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "find prints each entry whose key matches the whole pattern, or whose value does. The\n"
    "text of a value is the characters of a string, and what a file would contain for any\n"
    "other value. Indices of vectors and sets are not keys. find skips declarations of types.\n"
    "\n"
    "  ?         any character\n"
    "  *         any number of characters; at the end of a pattern write *? for one or more,\n"
    "            because a * there never matches the last character\n"
    "  [a-z_]    one of these characters, [!a-z] any but these\n"
    "  {ab,c*d}  one of these patterns\n"
    "  \\x        the character x itself\n"
    "A * or { chooses what leads to the longest match, or with --first to the first match.\n"
    "\n"
    "Examples:\n"
    "  qrv find device.attr humidity           is humidity\n"
    "  qrv find device.attr '{*bus,*bus*?}'    contains bus\n"
    "  qrv find device.attr '[!-0-9]*[0-9]'    ends with a digit and is not a number\n"
    "\n"
    "find prints each entry as a statement for set. set accepts all of them together, except\n"
    "for a file of one value and a path with a key that is neither a number nor a string. If\n"
    "several paths lead to a value, find examines it at the first of them. If nothing is\n"
    "found, the exit code is 1.";

bool is_declaration(objref const &value) {
    return value->is_type() || dynamic_cast<cAttspec const *>(value.get());
}

bool is_plain_container(objref const &value) {
    return cObj::is_map(value) || cObj::is_vector(value) || cObj::is_set(value);
}

bool has_named_keys(objref const &map) { return !cObj::is_vector(map) && !cObj::is_set(map); }

// A walk over all containers in a tree, each once, with the way to the current entry.
class cTree {
  public:
    struct cLevel {
        cAttrHash const &entries;
        bool named;
        cAttrNode const *node = nullptr; // the current entry
    };

    explicit cTree(objref const &top) { enter(top); }
    cTree(cTree const &) = delete;
    cTree &operator=(cTree const &) = delete;
    ~cTree() = default;

    // Moves to the next entry; false at the end.
    bool next() {
        for (; !way_.empty(); way_.pop_back()) {
            cLevel &level = way_.back();
            level.node = level.node ? level.entries.next(level.node) : level.entries.first();
            if (level.node) return true;
        }
        return false;
    }
    cLevel const &entry() const { return way_.back(); }
    std::vector<cLevel> const &way() const { return way_; }

    // Continues with the entries of this value, if it is a container that wasn't entered before.
    void enter(objref const &value) {
        cMapObj const *const map = as_map(value);
        if (map && entered_.insert(map).second)
            way_.push_back({map->datamap(), has_named_keys(value)});
    }

  private:
    std::vector<cLevel> way_;
    std::unordered_set<cMapObj const *> entered_;
};

class cSearch {
  public:
    cSearch(objref const &top, cPattern const &pattern, size_t longest, cMessages &messages)
        : top_(top), pattern_(pattern), longest_(longest), messages_(messages), tree_(top),
          raised_([this](cErr const &error) { report_error(error); }) {}
    cSearch(cSearch const &) = delete;
    cSearch &operator=(cSearch const &) = delete;
    ~cSearch() = default;

    std::string text() {
        if (!as_map(top_) && !is_declaration(top_) && pattern_.matches(text_of(top_))) add(top_);
        while (tree_.next() && !too_long()) {
            objref const &value = tree_.entry().node->valref();
            if (!value || is_declaration(value)) continue;
            if (is_hit(value)) add(value);
            tree_.enter(value);
        }
        return std::move(found_);
    }

  private:
    bool is_hit(objref const &value) {
        bool const fresh = is_fresh(value);
        cTree::cLevel const &entry = tree_.entry();
        if (entry.named && pattern_.matches(cat::as_string(entry.node->key()))) return true;
        return fresh && !as_map(value) && pattern_.matches(text_of(value));
    }

    // Is this the first position of the value? Constants exist once, but do not count as shared.
    bool is_fresh(objref const &value) {
        if (value->refs() < 2 || is_constant(*value)) return true;
        return seen_.insert(value.get()).second;
    }

    // The characters of a string, or the written form of another value.
    std::string text_of(objref const &value) const {
        if (&value->type() == &cat::type_string())
            return static_cast<cObjDR<std::string> const &>(*value).val();
        return cat::as_text(value);
    }

    void add(objref const &value) {
        if (as_map(value)) lay_out();
        size_t const before = messages_.count();
        adding_ = true;
        std::string const text = cat::as_text(value);
        adding_ = false;
        if (messages_.count() > before) return;
        std::string const path = this->path();
        test_path(path);
        if (!path.empty()) found_ += path + (takes_value(value) ? " = " : " &= ");
        found_ += text + ";\n";
    }

    // Constants and declarations can't be assigned to, and neither can a container that holds one.
    // An object of a declared type accepts new values for its attributes.
    static bool takes_value(objref const &value) {
        bool takes = !is_constant(*value);
        if (!is_plain_container(value)) return takes;
        for (cTree tree(value); takes && tree.next();) {
            objref const &part = tree.entry().node->valref();
            takes = !is_constant(*part) && !is_declaration(part);
            if (is_plain_container(part)) tree.enter(part);
        }
        return takes;
    }

    std::string path() const {
        std::string path;
        for (cTree::cLevel const &level : tree_.way()) {
            if (!path.empty()) path += '/';
            path += cat::as_text(level.node->key());
        }
        return path;
    }

    // Can the key be part of a path, as one token?
    static bool is_token(objref const &key) {
        if (&key->type() == &cat::type_string()) return true;
        return number_of(key) && &key->type() != &cat::type_intf();
    }

    void test_path(std::string const &path) {
        for (cTree::cLevel const &level : tree_.way()) {
            objref const &key = level.node->key();
            if (is_token(key)) continue;
            return messages_.warning(shortened(path) + ": set accepts no path with a key of type " +
                                     key->type().name());
        }
    }

    // Sets all containers to one line, and removes their comments: `set` would not accept them, and
    // a container with a string of several lines is written with comments.
    void lay_out() {
        if (std::exchange(laid_out_, true)) return;
        top_->set_omember("wformat", cat::of("sc"));
        for (cTree tree(top_); tree.next();) {
            objref const value = tree.entry().node->valref();
            if (as_map(value)) value->set_omember("wformat", cat::of("sc"));
            if (value->has_ommap()) value->set_omember("//", nullptr);
            tree.enter(value);
        }
    }

    // Reports an error of writing only for entries that are printed.
    void report_error(cErr const &error) {
        if (adding_) messages_.error(shortened(path()) + ": " + error.as_string(), error.code());
    }

    bool too_long() {
        if (found_.size() <= longest_) return false;
        messages_.error("the output is many times longer than the file; the rest is left out");
        return true;
    }

    objref top_;
    cPattern const &pattern_;
    size_t longest_;
    cMessages &messages_;
    cTree tree_;
    cat::ExactText const exact_;
    cRaisedErrors const raised_;
    bool adding_ = false;
    bool laid_out_ = false;
    std::unordered_set<cObj const *> seen_; // the shared values that were met
    std::string found_;
};

void find(cOptions const &options, cRead const &file, cReply &reply) {
    cPattern const pattern(options.pattern, options.first);
    size_t const longest = longest_text_from(file.bytes.size());
    reply.text = cSearch(file.value, pattern, longest, file.messages).text();
    reply.status = reply.text.empty() ? exit_found : exit_done;
    if (file.messages.count() > 0) reply.status = exit_failed;
    cMessages about_pattern("pattern", options.max_errors);
    pattern.report_hopeless(about_pattern);
    reply.messages = about_pattern.text(); // printed after the messages about the file
}

int run(cOptions const &options) {
    return print(with_value(options.file, options.max_errors,
                            [&](cRead const &file, cReply &reply) { find(options, file, reply); }));
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.required("PATTERN", options.pattern, "compared with keys and values");
    arguments.flag("--first", options.first, "use the first match, not the longest");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(50, "find", "Print the entries that match a pattern", help,
                       define<cOptions, add_arguments, run>);

} // namespace
