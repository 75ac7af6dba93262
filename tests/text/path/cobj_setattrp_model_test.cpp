// Executes random lists of statements on a tree and on a simple model of it. The model implements
// only the rules of the operations. Its nodes have six kinds and are shared by counted pointers, as
// objects are. After each list, results, messages, shapes and the identity of objects must agree.
//
// One run takes about a second. QRV_MODEL_SECONDS sets a longer time, QRV_MODEL_SEED another
// sequence:
//   QRV_MODEL_SECONDS=600 test_text --gtest_filter='SetPathModel.*'

#include "qrv/text/read/creadreport.h"
#include "tests/support/fixture.h"
#include "tests/text/path_support.h"
#include "text/state/ctext_state.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <variant>

namespace {

// --- the model

struct Node;
using Ref = std::shared_ptr<Node>;
using Key = std::variant<int, std::string>;
enum class Kind { nil, number, text, map, vector, set };

struct Node {
    Kind kind = Kind::nil;
    int number = 0;
    std::string text = {};
    std::vector<std::pair<Key, Ref>> items = {}; // the keys of a vector or set are 0, 1, 2 ...
    cObj const *twin = nullptr; // the object that corresponds to this node; null at first

    bool is_list() const { return kind == Kind::vector || kind == Kind::set; }
    bool is_container() const { return is_list() || kind == Kind::map; }
};

Ref new_node(Kind kind) {
    Ref node = std::make_shared<Node>();
    node->kind = kind;
    return node;
}

Ref const &the_nil() {
    static Ref const nil = new_node(Kind::nil);
    return nil;
}

bool is_name(std::string const &text) {
    return text.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
}

std::string shown(std::string const &text) { return is_name(text) ? text : "\"" + text + "\""; }

std::string shown(Key const &key) {
    int const *const number = std::get_if<int>(&key);
    return number ? std::to_string(*number) : shown(std::get<std::string>(key));
}

std::string shown(Ref const &node) {
    switch (node->kind) {
    case Kind::nil:
        return "#nil";
    case Kind::number:
        return std::to_string(node->number);
    case Kind::text:
        return shown(node->text);
    default:
        break;
    }
    bool const keyed = node->kind == Kind::map;
    std::string all = keyed ? "{ " : node->kind == Kind::vector ? "[ " : "< ";
    for (auto const &[key, value] : node->items)
        all += (keyed ? shown(key) + " = " : "") + shown(value) + "; ";
    return all + (keyed ? "}" : node->kind == Kind::vector ? "]" : ">");
}

size_t size_of(Ref const &node, size_t limit) {
    size_t size = 1;
    for (auto const &[key, value] : node->items) {
        if (size > limit) break;
        size += size_of(value, limit - size);
    }
    return size;
}

bool equal(Ref const &a, Ref const &b) {
    if (a->kind != b->kind || a->number != b->number || a->text != b->text) return false;
    auto const holds_all = [](Ref const &holder, Ref const &values) {
        for (auto const &[key, value] : values->items) {
            bool found = false;
            for (auto const &[place, held] : holder->items) found = found || equal(value, held);
            if (!found) return false;
        }
        return true;
    };
    if (a->kind == Kind::set) return holds_all(a, b) && holds_all(b, a);
    if (a->items.size() != b->items.size()) return false;
    for (size_t i = 0; i < a->items.size(); ++i)
        if (a->items[i].first != b->items[i].first ||
            !equal(a->items[i].second, b->items[i].second))
            return false;
    return true;
}

Ref *find(Node &node, Key const &key) {
    for (auto &[present, value] : node.items)
        if (present == key) return &value;
    return nullptr;
}

bool holds_equal(Node const &set, Ref const &value) {
    for (auto const &[key, held] : set.items)
        if (equal(value, held)) return true;
    return false;
}

// The possible results of reading an attribute.
struct Got {
    enum { found, missing, bad } state = missing;
    Ref value = {};
};

Got get(Node &node, Key const &key) {
    if (node.kind == Kind::number || node.kind == Kind::text) return {Got::bad};
    Ref const *const value = find(node, key);
    return value ? Got{Got::found, *value} : Got{Got::missing};
}

void erase(Node &holder, size_t place) {
    holder.items.erase(holder.items.begin() + static_cast<std::ptrdiff_t>(place));
    if (!holder.is_list()) return;
    for (size_t i = 0; i < holder.items.size(); ++i) holder.items[i].first = static_cast<int>(i);
}

void remove(Node &map, Key const &key) {
    std::erase_if(map.items, [&key](auto const &item) { return item.first == key; });
}

bool store(Node &node, Key const &key, Ref const &value) {
    if (!node.is_container()) return false;
    if (node.kind == Kind::set && holds_equal(node, value)) return true;
    if (Ref *const present = find(node, key)) {
        *present = value;
        return true;
    }
    if (node.is_list() && key != Key(static_cast<int>(node.items.size()))) return false;
    node.items.emplace_back(key, value);
    return true;
}

bool append(Node &node, Ref const &value) {
    if (!node.is_container()) return false;
    if (node.kind == Kind::set && holds_equal(node, value)) return false;
    int last = -1;
    for (auto const &[key, held] : node.items)
        if (int const *const index = std::get_if<int>(&key); index && *index > last) last = *index;
    node.items.emplace_back(last + 1, value);
    return true;
}

using Pairs = std::set<std::pair<Node *, Node *>>;

bool assign(Ref const &target, Ref const &source, Pairs &done);

// The keys of both are listed before anything changes; a pair is not copied twice.
bool copy(Ref const &target, Ref const &source, Pairs &done) {
    if (!source->is_container()) return false;
    if (!done.emplace(target.get(), source.get()).second) return true;
    auto const own = target->items;
    auto const given = source->items;
    std::set<Key> before;
    for (auto const &item : own) before.insert(item.first);
    bool result = true;
    for (auto const &[key, value] : own) {
        if (find(*source, key)) {
            result &= assign(*find(*target, key), *find(*source, key), done);
        } else if (target->kind == Kind::map) {
            remove(*target, key);
        }
    }
    for (auto const &[key, value] : given) {
        bool const is_new = !before.contains(key);
        if (is_new && target->kind == Kind::map)
            result &= store(*target, key, value);
        else if (is_new)
            append(*target, value); // its result is ignored
    }
    if (target->kind == Kind::vector)
        for (size_t i = own.size(); i-- > 0;)
            if (!find(*source, own[i].first)) erase(*target, i);
    return result;
}

bool assign(Ref const &target, Ref const &source, Pairs &done) {
    if (target->kind == Kind::nil) return false;
    if (source->kind == Kind::nil) return true;
    if (target->kind == Kind::map || target->kind == Kind::vector)
        return copy(target, source, done);
    if (target->kind == Kind::set) {
        target->items.clear(); // even if it is the source
        for (auto const &[key, value] : source->items) append(*target, value);
        return true;
    }
    if (target->kind != source->kind) return false;
    target->number = source->number;
    target->text = source->text;
    return true;
}

bool add(Ref const &target, Ref const &value) {
    if (target->kind == Kind::nil) return false;
    if (value->kind == Kind::nil) return true;
    if (target->is_container()) {
        if (!value->is_container()) return true;
        Ref const clone = new_node(value->kind);
        Pairs done;
        assign(clone, value, done);
        for (auto const &[key, item] : clone->items) {
            if (target->is_list())
                append(*target, item);
            else if (!find(*target, key))
                store(*target, key, item);
        }
        return true;
    }
    if (target->kind != value->kind) return false;
    target->number += value->number;
    target->text += value->text;
    return true;
}

struct Statement {
    std::vector<Key> path;
    std::string op; // empty for a path without an operator
    Ref value;
};

std::string shown(std::vector<Key> const &path, size_t length) {
    std::string all;
    for (size_t i = 0; i < length; ++i) all += "/" + shown(path[i]);
    return all;
}

bool apply(Ref const &root, Statement const &s, bool force, std::string &reported) {
    bool const whole = s.op == "+=" || s.op == "<<";
    bool const may_create = !whole || (s.op == "+=" && s.value->kind == Kind::map);
    Ref at = root;
    for (size_t i = 0; i + (whole ? 0 : 1) < s.path.size(); ++i) {
        Got got = get(*at, s.path[i]);
        if (got.state == Got::missing && may_create && force && at->kind != Kind::nil) {
            Ref const level = new_node(Kind::map);
            if (store(*at, s.path[i], level)) got = {Got::found, level};
        }
        if (got.state != Got::found) {
            reported += (may_create ? "Call of setattrp with not existing path: "
                                    : "Call of setattrp with operator '" + s.op +
                                          "' is not allowed in case of not existing path: ") +
                        shown(s.path, i + 1) + "\n";
            return false;
        }
        at = got.value;
    }
    if (s.op == "+=") return add(at, s.value);
    if (s.op == "<<") return append(*at, s.value);
    Got const present = get(*at, s.path.back());
    if (s.op == "&=" || present.state != Got::found) return store(*at, s.path.back(), s.value);
    Pairs done;
    return assign(present.value, s.value, done);
}

// --- both side by side

class Comparison {
  public:
    explicit Comparison(std::uint64_t seed) : random_(seed) {}

    // Runs one list of statements, or one value, on both. Returns the difference, or nothing.
    std::string step();
    size_t statements() const { return statements_; }

  private:
    struct Both {
        Ref node;
        objref obj;
    };

    size_t below(size_t n) { return static_cast<size_t>(random_() % n); }
    bool one_in(size_t n) { return below(n) == 0; }
    template <class T, size_t n> T const &one_of(T const (&list)[n]) { return list[below(n)]; }

    Key key();
    Ref value(int depth);
    std::vector<Key> path();
    std::string separator();
    std::string written(std::vector<Key> const &path);
    std::string step_text();
    std::string step_value();
    std::string step_read();
    bool could_be_cyclic(Statement const &s);
    void start();
    std::string compare(std::string const &what, bool model, bool real, std::string const &reported,
                        cat::ReadReport const &report);
    std::string compare(Ref const &node, objref const &obj);

    std::mt19937_64 random_;
    Both tree_;
    std::vector<Both> values_; // they may be stored at several positions of the tree
    size_t statements_ = 0;
    std::unordered_map<cObj const *, Node const *> nodes_;
    std::unordered_set<Node const *> visited_;
};

Key Comparison::key() {
    static char const *const names[] = {"a", "b", "c", "d", "x y", "q/r"};
    static int const numbers[] = {0, 0, 1, 1, 2, 3, -1, 7};
    if (one_in(3)) return one_of(numbers);
    return std::string(one_of(names));
}

Ref Comparison::value(int depth) {
    static Kind const kinds[] = {Kind::nil,  Kind::number, Kind::number, Kind::number, Kind::text,
                                 Kind::text, Kind::map,    Kind::map,    Kind::vector, Kind::set};
    Kind const kind = one_of(kinds);
    if (kind == Kind::nil) return the_nil();
    Ref const node = new_node(depth == 0 ? Kind::number : kind);
    if (node->kind == Kind::number) node->number = static_cast<int>(below(5));
    if (node->kind == Kind::text) node->text = std::string(1, "pqrs"[below(4)]);
    if (!node->is_container()) return node;
    for (size_t n = below(4); n > 0; --n) {
        Ref const item = value(depth - 1);
        if (node->kind != Kind::map)
            append(*node, item);
        else if (Key const k = key(); !find(*node, k))
            node->items.emplace_back(k, item);
    }
    return node;
}

std::vector<Key> Comparison::path() {
    std::vector<Key> keys;
    Ref at = tree_.node;
    for (size_t n = 1 + below(4); n > 0; --n) {
        if (at && !at->items.empty() && !one_in(4))
            keys.push_back(at->items[below(at->items.size())].first);
        else
            keys.push_back(key());
        Ref const *const next = at ? find(*at, keys.back()) : nullptr;
        at = next ? *next : nullptr;
    }
    return keys;
}

std::string Comparison::separator() {
    static char const *const all[] = {";", ",", "; ", ";\n", " ;; ", " // c\n;", ";/* c */", ",;,"};
    return one_of(all);
}

std::string Comparison::written(std::vector<Key> const &path) {
    static char const *const slashes[] = {"/", "/", "/", " /", "/ ", "/*c*//", "/\n"};
    std::string all = one_in(4) ? "/" : "";
    for (size_t i = 0; i < path.size(); ++i) all += (i ? one_of(slashes) : "") + shown(path[i]);
    return all;
}

std::string Comparison::step_text() {
    struct Wrong {
        char const *text;
        char const *reported;
    };
    static Wrong const no_statement[] = {
        {"= 1", "ERROR in setattrp: Bad no-key entry: ="},
        {"a/", "ERROR in setattrp: Bad no-key entry: ;"},
        {"12x = 1", "ERROR in setattrp: Bad no-key entry: 12x"},
        {"a", "ERROR in setattrp: Separator / or operator expected, bad entry: ;"},
        {"a b = 1", "ERROR in setattrp: Separator / or operator expected, bad entry: b"},
        {"a/ /b = 1", "ERROR in setattrp:  Bad final or duplicate /"}};
    static Wrong const no_value[] = {
        {"nosuch(a; b = 2)", "Value with unknown type='nosuch"},
        {"#none", "Unknown #-value (no defined const): #none"},
        {"99999999999", "Failed to read value:  Input of standard type: 99999999999"}};
    static char const *const ops[] = {"=", "=", "&=", "+=", "<<"};

    bool const force = !one_in(3);
    bool result = true;
    std::string text = one_in(4) ? separator() : "";
    std::string reported;
    for (size_t n = below(5) + 1; n > 0; --n) {
        ++statements_;
        if (one_in(40)) {
            Wrong const &wrong = one_of(no_statement);
            text += std::string(wrong.text) + "; a = 1";
            reported += std::string(wrong.reported) + "\n";
            result = false;
            break;
        }
        Statement s{path(), one_of(ops), value(3)};
        text += written(s.path) + " " + s.op + " ";
        if (one_in(60)) break; // no value after the operator
        if (one_in(40)) {
            Wrong const &wrong = one_of(no_value);
            text += std::string(wrong.text) + ";";
            reported += std::string(wrong.reported) + "\n";
            result = false;
            continue;
        }
        text += shown(s.value) + separator();
        result = apply(tree_.node, s, force, reported) && result;
    }
    cat::ReadReport report;
    bool const real = tree_.obj->setattrp(text, force);
    return compare(text + (force ? "  with force" : ""), result, real, reported, report);
}

// Returns whether the statement could create a cycle: the value contains a container that the
// statement may change.
bool Comparison::could_be_cyclic(Statement const &s) {
    std::unordered_set<Node const *> touched;
    std::function<void(Ref const &)> const note = [&](Ref const &node) {
        if (node->is_container() && touched.insert(node.get()).second)
            for (auto const &[key, item] : node->items) note(item);
    };
    touched.insert(tree_.node.get());
    Ref at = tree_.node;
    for (Key const &k : s.path) {
        Ref const *const next = find(*at, k);
        if (!next) {
            at = nullptr;
            break;
        }
        at = *next;
        touched.insert(at.get());
    }
    if (at && at == s.value) return s.op != "="; // assigned to itself
    if (at) touched.erase(at.get()), note(at);
    std::function<bool(Ref const &)> const meets = [&](Ref const &node) {
        if (!node->is_container()) return false;
        if (touched.contains(node.get())) return true;
        for (auto const &[key, item] : node->items)
            if (meets(item)) return true;
        return false;
    };
    return meets(s.value);
}

std::string Comparison::step_value() {
    static char const *const ops[] = {"", "", "=", "&=", "&=", "+=", "<<"};
    Both &both = values_[below(values_.size())];
    Statement const s{path(), one_of(ops), both.node};
    if (could_be_cyclic(s)) return {};
    ++statements_;
    bool const force = !one_in(3);
    std::string reported;
    bool const result = apply(tree_.node, s, force, reported);
    cat::ReadReport report;
    cErrorLog errors; // prevents the output of the operations' errors
    std::string const text = written(s.path) + " " + s.op;
    bool const real = tree_.obj->setattrp(text, both.obj, force);
    return compare(text + "  value " + shown(both.node), result, real, reported, report);
}

std::string Comparison::step_read() {
    std::vector<Key> const keys = path();
    std::string const text = written(keys);
    Got got{Got::found, tree_.node};
    for (size_t i = 0; i < keys.size() && got.state != Got::missing; ++i)
        got = got.state == Got::bad ? Got{Got::missing} // cat::bad() has no attributes
                                    : get(*got.value, keys[i]);
    cErrorLog errors;
    objref const real = tree_.obj->getattrp(text);
    bool const is_nil = got.value && got.value->kind == Kind::nil;
    bool const agree = got.state == Got::found
                           ? real == (is_nil ? cat::nil().get() : got.value->twin)
                       : got.state == Got::missing ? real == cat::badfind()
                                                   : real == cat::bad();
    return agree ? "" : "reading " + text + " gives " + path_test::flat(real);
}

std::string Comparison::compare(std::string const &what, bool model, bool real,
                                std::string const &reported, cat::ReadReport const &report) {
    std::string in_report;
    for (cat::ReadError const &error : report.entries())
        for (char const *begin :
             {"ERROR in setattrp", "Call of setattrp", "Value with unknown type", "Unknown #-value",
              "Failed to read value"})
            if (error.text.rfind(begin, 0) == 0) in_report += error.text + "\n";
    std::string wrong;
    if (model != real) wrong += real ? "result is true\n" : "result is false\n";
    if (reported != in_report) wrong += "reported:\n" + in_report + "instead of:\n" + reported;
    if (!text_state().idle()) wrong += "not idle\n";
    nodes_.clear();
    visited_.clear();
    wrong += compare(tree_.node, tree_.obj);
    for (Both const &both : values_) wrong += compare(both.node, both.obj);
    if (wrong.empty()) return {};
    return what + "\n" + wrong + "model " + shown(tree_.node) + "\nreal  " +
           path_test::flat(tree_.obj);
}

std::string Comparison::compare(Ref const &node, objref const &obj) {
    if (!obj) return "a null value\n";
    if (node->kind == Kind::nil) return obj == cat::nil() ? "" : "not nil\n";
    if (!node->twin) node->twin = obj.get();
    Node const *&known = nodes_[obj.get()];
    if (!known) known = node.get();
    if (known != node.get() || node->twin != obj.get())
        return "another object corresponds to " + shown(node) + "\n";
    if (!visited_.insert(node.get()).second) return {};
    if (!node->is_container())
        return cat::as_text(obj) == shown(node) ? "" : "not " + shown(node) + "\n";
    auto const *const map = dynamic_cast<cMapObj const *>(obj.get());
    cTypeObj const &type = node->kind == Kind::map      ? cat::type_map()
                           : node->kind == Kind::vector ? cat::type_vector()
                                                        : cat::type_set();
    if (!map || &obj->type() != &type) return "another type than " + shown(node) + "\n";
    cAttrHash const &hash = map->datamap();
    if (hash.used() != node->items.size()) return "another size than " + shown(node) + "\n";
    cAttrNode const *at = hash.first();
    for (auto const &[key, item] : node->items) {
        if (cat::as_text(at->key()) != shown(key)) return "another key than " + shown(key) + "\n";
        if (std::string const wrong = compare(item, at->valref()); !wrong.empty()) return wrong;
        at = hash.next(at);
    }
    return {};
}

void Comparison::start() {
    tree_.node = nullptr;
    values_.clear();
    auto const both = [](Ref const &node) { return Both{node, path_test::read(shown(node))}; };
    do tree_ = both(value(4));
    while (!tree_.node->is_container());
    for (int i = 0; i < 5; ++i) values_.push_back(both(value(2)));
    cat::ReadReport const nothing;
    (void)compare("start", true, true, "", nothing); // sets `twin` of each node
}

std::string Comparison::step() {
    if (!tree_.node || one_in(200) || size_of(tree_.node, 600) > 600) start();
    for (Both const &both : values_)
        if (size_of(both.node, 200) > 200) start();
    size_t const what = below(4);
    return what == 0 ? step_value() : what == 1 ? step_read() : step_text();
}

class SetPathModel : public QrvTest {};

std::uint64_t setting(char const *name, std::uint64_t otherwise) {
    char const *const text = std::getenv(name);
    return text ? std::strtoull(text, nullptr, 10) : otherwise;
}

} // namespace

TEST_F(SetPathModel, random_statements_agree_with_the_model) {
    std::uint64_t const seconds = setting("QRV_MODEL_SECONDS", 0);
    std::uint64_t const seed = setting("QRV_MODEL_SEED", 1);
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    Comparison comparison(seed);
    constexpr size_t in_a_short_run = 12000;
    while (comparison.statements() < in_a_short_run || std::chrono::steady_clock::now() < end) {
        ASSERT_EQ(comparison.step(), "")
            << "seed " << seed << ", statement " << comparison.statements();
        messages(); // discards what the statements printed
    }
    RecordProperty("statements", std::to_string(comparison.statements()));
    if (seconds > 0)
        std::printf("seed %llu: %zu statements\n", static_cast<unsigned long long>(seed),
                    comparison.statements());
}
