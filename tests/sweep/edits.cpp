#include "tests/sweep/edits.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/read/csourcemap.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace sweep_test {
namespace {

constexpr char const *new_key = "inserted_by_the_sweep", *new_value = "\"put in by the sweep\"";

bool is_list(objref const &value) { return cObj::is_vector(value) || cObj::is_set(value); }

// True for objects of a declared type.
bool sets_its_keys(objref const &value) { return !is_list(value) && !cObj::is_map(value); }

cMapObj const *container_in(objref const &value) {
    return value && !value->is_type() ? dynamic_cast<cMapObj const *>(value.get()) : nullptr;
}

bool is_constant(objref const &value) { return cat::find_const(value.get()); }

objref read(std::string const &text) {
    cat::ReadReport const report;
    std::istringstream in(text);
    objref value;
    return cObj::readobj(in, value) == 0 && report.empty() ? value : objref();
}

// How the tree differs from the tree before the edit.
struct cChange {
    cAttrNode const *without = nullptr;  // this entry is removed
    cAttrNode const *before = nullptr;   // the new value is before this entry,
    cAttrNode const *after = nullptr;    // after it,
    cObj const *into = nullptr;          // or the last one of this container
    cAttrNode const *replaced = nullptr; // this entry has another value
    cObj const *assigned = nullptr;      // this value is a different one, wherever it occurs
    std::string text;                    // the text of the new value
};

class cTree {
  public:
    explicit cTree(cChange const &change) : change_(change) {}

    std::string of(objref const &root) {
        add("", root);
        return std::move(text_);
    }

  private:
    void line(std::string const &path, std::string const &value) {
        text_ += path + " = " + value + '\n';
    }

    void add(std::string const &path, objref const &value) {
        cMapObj const *const container = container_in(value);
        if (value.get() == change_.assigned) return line(path, change_.text);
        if (!container) return line(path, cat::as_text(value));
        line(path, value->type().name());
        bool const list = is_list(value);
        size_t position = 0;
        auto const next = [&](std::string const &key) {
            return path + '/' + (list ? std::to_string(position++) : key);
        };
        cAttrHash const &hash = container->datamap();
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
            if (node == change_.before) line(next(new_key), change_.text);
            if (node == change_.replaced)
                line(next(cat::as_text(node->key())), change_.text);
            else if (node != change_.without)
                add(next(cat::as_text(node->key())), node->valref());
            if (node == change_.after) line(next(new_key), change_.text);
        }
        if (value.get() == change_.into) line(next(new_key), change_.text);
    }

    cat::ExactText const exact_;
    cChange const &change_;
    std::string text_;
};

class cWalk {
  public:
    cWalk(std::string const &text, size_t every, std::function<void(cEdit const &)> const &visit)
        : text_(text), every_(every), visit_(visit), in_(text) {
        cat::ReadReport const report;
        if (cObj::readobj(in_, root_) != 0 || !report.empty() || !container_in(root_))
            throw std::runtime_error("the file has errors, or no entries");
        for (size_t at = 0; at < text.size(); ++at)
            if (text[at] == '\n') line_ends_.push_back(at);
        for (size_t i = 0; i < map_.size(); ++i)
            if (map_.entry(i).reference) references_.push_back(map_.entry(i));
    }

    void run() { walk("", root_, false); }

  private:
    using cSpans = std::vector<cat::SourceEntry>;

    // Through a reference the same entries have other paths: there only their values are changed.
    void walk(std::string const &path, objref const &container, bool again) {
        if (!again) append(path, container);
        size_t position = 0, end_before = 0;
        cAttrHash const &hash = container_in(container)->datamap();
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node), ++position) {
            cSpans const spans = map_.spans(node->anid());
            if (spans.empty()) continue; // a default value, which is not in the text
            std::string const below =
                path + (path.empty() ? "" : "/") +
                (is_list(container) ? std::to_string(position) : exact_text(node->key()));
            cPlace const place{container, *node, path, below, position, spans, end_before};
            end_before = with_comments(spans.front()).second;
            change(place);
            if (!again) {
                remove(place);
                if (!sets_its_keys(container)) {
                    insert(place, false);
                    insert(place, true);
                }
            }
            if (container_in(node->valref()))
                walk(below, node->valref(), again || spans.back().reference);
        }
    }

    struct cPlace {
        objref const &container;
        cAttrNode const &node;
        std::string const &parent; // its path
        std::string const &path;
        size_t position;
        cSpans const &spans;
        size_t end_before; // where the entry before it ends, or 0
    };

    // True for every N-th edit.
    bool is_due() { return count_++ % every_ == 0; }

    void visit(cEdit &edit, cChange const &change) {
        edit.tree = cTree(change).of(root_);
        visit_(edit);
    }

    static std::string exact_text(objref const &value) {
        cat::ExactText const exact;
        return cat::as_text(value);
    }

    // --- lines ---

    size_t line_of(size_t offset) const {
        return static_cast<size_t>(std::lower_bound(line_ends_.begin(), line_ends_.end(), offset) -
                                   line_ends_.begin());
    }
    // How many lines the bytes are on. They may change.
    size_t allow(cEdit &edit, size_t begin, size_t end) const {
        size_t const first = line_of(begin), last = line_of(std::max(begin, end - 1));
        if (edit.lines.size() <= last) edit.lines.resize(last + 1);
        std::fill(edit.lines.begin() + static_cast<std::ptrdiff_t>(first),
                  edit.lines.begin() + static_cast<std::ptrdiff_t>(last) + 1, true);
        return last - first + 1;
    }

    cBytes with_comments(cat::SourceEntry const &entry) const {
        cBytes bytes{entry.all().begin, entry.all().end};
        for (cat::SourceComment const &comment : map_.comments(entry.number)) {
            if (comment.where != cat::SourceComment::above &&
                comment.where != cat::SourceComment::after)
                continue;
            bytes.first = std::min<size_t>(bytes.first, comment.span.begin);
            bytes.second = std::max<size_t>(bytes.second, comment.span.end);
        }
        return bytes;
    }

    // The path that a reference has in the text.
    std::string target_of(cat::SourceEntry const &reference) const {
        std::string_view text(text_);
        text = text.substr(reference.value.begin, reference.value.size());
        text.remove_prefix(text.find('(') + 1);
        text = text.substr(0, text.rfind(')'));
        std::string path;
        for (char const c : text)
            if (c != ' ') path += c;
        return path.substr(path.starts_with('/') ? 1 : 0);
    }

    static bool is_at_or_below(std::string const &path, std::string const &top) {
        return path == top || path.starts_with(top + '/');
    }

    // References through positions from this one on change.
    void allow_references_behind(cEdit &edit, cPlace const &place, size_t first) const {
        if (!is_list(place.container)) return;
        size_t const size = static_cast<size_t>(container_in(place.container)->size());
        for (cat::SourceEntry const &reference : references_)
            for (size_t i = first; i < size; ++i)
                if (is_at_or_below(target_of(reference), place.parent + '/' + std::to_string(i)))
                    edit.meant += allow(edit, reference.value.begin, reference.value.end);
    }

    // --- edits ---

    // Another value of the same type, in written form; empty for a value that isn't changed.
    static std::string another(objref const &value) {
        std::string const text = exact_text(value);
        if (text == "#nil") return "7";
        if (is_constant(value)) return text == "#true" ? "#false" : "#true";
        cTypeObj const &type = value->type();
        if (&type == &cat::type_bool()) return text == "true" ? "false" : "true";
        if (&type == &cat::type_int()) {
            int const number = static_cast<cObjDR<int> const &>(*value).val();
            return std::to_string(number + (number < 2147483647 ? 1 : -1));
        }
        if (&type == &cat::type_double()) return "0.125";
        if (&type == &cat::type_float()) return "0.125f";
        if (&type == &cat::type_string()) return "\"changed by the sweep\"";
        if (type.name() == "intf") return "intf(77)";
        objref const choices = type.tmember("choices");
        if (!cObj::is_good(choices)) return "";
        cAttrHash const &hash = container_in(choices)->datamap();
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
            std::string const other = type.name() + '(' + exact_text(node->key()) + ')';
            if (other != text) return other;
        }
        return "";
    }

    void change(cPlace const &place) {
        objref const &value = place.node.valref();
        if (container_in(value) || value->is_type() || cObj::is_set(place.container)) return;
        std::string const other = another(value);
        if (other.empty() || !is_due()) return;
        bool const constant = is_constant(value);
        cSpans written;
        if (place.spans.back().reference && !constant) written = map_.written(*value);
        cEdit edit{changed, {"set", "@", place.path + (constant ? " &= " : " = ") + other}};
        cat::Span const span = (written.empty() ? place.spans : written).back().value;
        edit.meant = allow(edit, span.begin, span.end);
        cChange change;
        if (constant) {
            change.replaced = &place.node;
            change.text = exact_text(read(other));
        } else {
            objref const copy = value->clone();
            copy->assign(read(other));
            change.assigned = value.get();
            change.text = exact_text(copy);
        }
        visit(edit, change);
    }

    void remove(cPlace const &place) {
        if (!is_due()) return;
        cEdit edit{deleted, {"del", "@", place.path}};
        size_t value_lines = 0;
        for (cat::SourceEntry const &entry : place.spans) {
            cBytes const own = with_comments(entry);
            edit.own.push_back(own);
            edit.meant += allow(edit, own.first, own.second);
            value_lines += allow(edit, entry.value.begin, entry.value.end);
        }
        allow_references_behind(edit, place, place.position + 1);
        for (cat::SourceEntry const &reference : references_)
            if (is_at_or_below(target_of(reference), place.path)) {
                edit.meant += allow(edit, reference.value.begin, reference.value.end);
                edit.meant += std::exchange(value_lines, 0);
                edit.moves_comments = true;
            }
        if (place.node.valref()->is_type())
            edit.refusal = "this type is still used";
        else if (sets_its_keys(place.container))
            edit.refusal = "needs this key|REQUIRED attribute";
        cChange change;
        change.without = &place.node;
        visit(edit, change);
    }

    void insert(cPlace const &place, bool after) {
        if (!is_due()) return;
        cEdit edit{inserted, {"ins", "@", place.path, after ? "after" : "before"}};
        if (!is_list(place.container)) edit.command.emplace_back(new_key);
        edit.command.emplace_back(new_value);
        cat::SourceEntry const &entry = place.spans.front();
        cBytes const own = with_comments(entry);
        if (after)
            allow(edit, own.second - 1, own.second);
        else
            allow(edit, own.first, own.first + 1);
        if (!after && place.end_before > 0) // directly after the entry before it
            allow(edit, place.end_before - 1, place.end_before);
        edit.meant = after && entry.delimiter.empty() ? 2 : 1;
        allow_references_behind(edit, place, place.position + (after ? 1 : 0));
        cChange change;
        (after ? change.after : change.before) = &place.node;
        change.text = new_value;
        visit(edit, change);
    }

    void append(std::string const &path, objref const &container) {
        bool const list = is_list(container);
        if (sets_its_keys(container) || (list && path.empty()) || !is_due()) return;
        std::string const key = path + (path.empty() ? "" : "/") + new_key;
        cEdit edit{appended, {"set", "@", (list ? path + " << " : key + " = ") + new_value}};
        cSpans spans = map_.written(*container);
        if (path.empty()) spans = {map_.entry(0)};
        std::vector<cat::SourceEntry> inside = map_.inside(spans.back().number);
        while (inside.size() == 1 && inside[0].anid == 0 && !inside[0].open.empty())
            inside = map_.inside(inside[0].number);
        if (inside.empty()) {
            edit.meant =
                std::max<size_t>(1, allow(edit, spans.back().value.begin, spans.back().value.end));
        } else {
            size_t const end = with_comments(inside.back()).second;
            allow(edit, end - 1, end);
            edit.meant = inside.back().delimiter.empty() ? 2 : 1;
        }
        cChange change;
        change.into = container.get();
        change.text = new_value;
        visit(edit, change);
    }

    std::string const &text_;
    size_t const every_;
    std::function<void(cEdit const &)> const &visit_;
    std::istringstream in_;
    cat::SourceMap const map_;
    objref root_;
    std::vector<size_t> line_ends_;
    std::vector<cat::SourceEntry> references_;
    size_t count_ = 0;
};

} // namespace

void for_edits(std::string const &text, size_t every,
               std::function<void(cEdit const &)> const &visit) {
    cat::TypeScope const types;
    cWalk(text, every, visit).run();
}

std::string tree_of(std::string const &text) {
    cat::TypeScope const types;
    objref const root = read(text);
    return root ? cTree(cChange()).of(root) : "unreadable";
}

} // namespace sweep_test
