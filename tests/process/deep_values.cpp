// Trees of 100,000 levels, built from the innermost one, in a new process with a stack of 8 MB.
// Once a program has its own iterator, each store searches the stored value for a cycle, and the
// stores of such a tree would take minutes. So no other test runs in this process. Functions that
// need the stack for each level report that the tree is too deep; all others work.

#include "process.h"
#include "qrv/value.h"

#include <sstream>
#include <sys/resource.h>

namespace {

constexpr int levels = 100'000;

qrv::value maps() {
    qrv::value child = qrv::map{{"x", 1}};
    for (int i = 0; i < levels; ++i) child = qrv::map{{"a", child}};
    return child;
}

qrv::value entries() {
    qrv::value child = qrv::map{{"x", 1}};
    for (int i = 0; i < levels; ++i) {
        qrv::value parent;
        parent["a"] = child;
        child = parent;
    }
    return child;
}

template <class List> qrv::value lists() {
    qrv::value child = List(1);
    for (int i = 0; i < levels; ++i) {
        List parent;
        parent.push_back(child);
        child = parent;
    }
    return child;
}

std::string path_of_innermost(qrv::value const &tree) {
    std::string path;
    for (int i = 0; i < levels; ++i) path += tree.is_map() ? "a/" : "0/";
    return path + (tree.is_map() ? "x" : "0");
}

template <class Work> bool is_too_deep(Work const &work) {
    try {
        work();
        return false;
    } catch (qrv::error const &) {
        return true;
    }
}

void check(qrv::value tree, qrv::value const &other) {
    std::string const path = path_of_innermost(tree);
    CHECK(tree.get<int>(path) == 1);
    CHECK(tree.find(path).has_value());
    tree.set(path, 2);
    CHECK(tree.get_or(path, 0) == 2);
    CHECK(tree.erase(path));

    CHECK(is_too_deep([&] { static_cast<void>(tree.clone()); }));
    CHECK(is_too_deep([&] { static_cast<void>(tree == other); }));
    CHECK(is_too_deep([&] { static_cast<void>(tree < other); }));
    CHECK(is_too_deep([&] { static_cast<void>(tree.hash()); }));
    CHECK(is_too_deep([&] { static_cast<void>(tree.paths_of(other)); }));
}

// Uses nested vectors, which are written on one line: the indentation of nested maps would take
// many megabytes before the writer reports that the tree is too deep.
void check_text(qrv::value const &tree) {
    CHECK(is_too_deep([&] { static_cast<void>(qrv::dump(tree)); }));
    CHECK(is_too_deep([&] { static_cast<void>(qrv::dump(tree, {.one_line = true})); }));
    std::ostringstream os;
    os << tree;
    CHECK(os.fail());
    auto document = qrv::document::parse("{ a= 1; }");
    document["b"] = tree;
    CHECK(is_too_deep([&] { static_cast<void>(document.text()); }));
}

int check_all() {
    check(maps(), maps());
    check(entries(), entries());
    check(lists<qrv::vector>(), lists<qrv::vector>());
    check(lists<qrv::set>(), lists<qrv::set>());

    check_text(lists<qrv::vector>());
    qrv::value target = maps();
    CHECK(is_too_deep([&] { target.merge(maps()); }));
    CHECK(is_too_deep([&] { qrv::value().set(path_of_innermost(maps()), 1); }));
    std::string text;
    for (int i = 0; i < levels; ++i) text += "{a= ";
    CHECK(is_too_deep([&] { qrv::parse(text, {.depth = 2 * levels}); }));
    return failures;
}

} // namespace

int main(int argc, char **) {
    if (argc > 1) return check_all();
    rlimit const stack{8U << 20U, 8U << 20U};
    CHECK(::setrlimit(RLIMIT_STACK, &stack) == 0);
    CHECK(run_self("limited").status == 0);
    return failures;
}
