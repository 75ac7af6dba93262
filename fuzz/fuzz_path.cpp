// Fuzzes reading and writing by paths, with generated paths on a small tree. Properties that must
// hold for every input:
//   - no crash, no finding of the sanitizers; exceptions only if the handler throws errors;
//   - afterwards reader and writer are idle, and no counted object remains;
//   - after setattrp has stored a value at a path, getattrp of this path returns a good value, and
//     an equal one if the path had no value before. (Assigning to an existing value converts. A set
//     that has an equal value does not store it again.)
//   - the tree can be written;
//   - if writing omitted no value and the tree has no declared types, the written text can be read
//     without an error, and writing that result gives the same text. (Assigning to a value of a set
//     can make it equal to another one, which reading then drops. So a tree with sets is written
//     once more before the texts are compared.)
//
// The bits of the first byte (cChoice) select the function, `force`, whether errors are thrown, the
// value, and the tree.
#include "fuzz/fuzz_support.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"

#include <cstddef>

namespace {

enum cChoice : unsigned { one_value = 1, force = 2, throws = 4, container = 8, from_vector = 16 };

char const *const map_text =
    "{ a = {b = 1; c = {d = text; e = 2.5}}; v = [1; {x = 1}; [2; 3]]; s = <1; two; {y = 1}>; "
    "0 = zero; -1 = minus; 'x y' = 4; n = #nil; t = true }";
char const *const vector_text = "[ {a = 1; b = [1]}; [1; 2; 3]; <4; 5>; 6; seven ]";

bool holds_set(objref const &value) {
    auto const *const map = dynamic_cast<cMapObj const *>(value.get());
    if (!map) return false;
    if (cObj::is_set(value)) return true;
    cAttrHash const &hash = map->datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        if (holds_set(node->valref())) return true;
    return false;
}

// Whether a set in the tree has an equal value. Such a set does not store the value again.
bool is_in_a_set(cObj const &tree, objref const &value) {
    auto const *const map = dynamic_cast<cMapObj const *>(&tree);
    if (!map) return false;
    cAttrHash const &hash = map->datamap();
    if (dynamic_cast<cSetObj const *>(&tree) && hash.findvalue(value)) return true;
    cAttrNode const *node = hash.first();
    for (; node; node = hash.next(node))
        if (node->valref() && is_in_a_set(*node->valref(), value)) return true;
    return false;
}

// Whether the value is or contains a declaration, or a value of a declared type. Statements can put
// a value before the declaration of its type, or declare a name twice. Text cannot represent to
// which declaration such a value belongs.
bool holds_declared(objref const &value) {
    if (!value) return false;
    if (value->is_type() || &value->type().type() != &cat::typetype()) return true;
    if (&value->type() == &cat::type_attspec()) return true;
    auto const *const map = dynamic_cast<cMapObj const *>(value.get());
    cAttrNode const *node = map ? map->datamap().first() : nullptr;
    for (; node; node = map->datamap().next(node))
        if (holds_declared(node->key()) || holds_declared(node->valref())) return true;
    return false;
}

bool set_value(cObj &tree, std::string const &text, unsigned choice) {
    objref const value =
        (choice & container) ? fuzz::read_text("{p = 1; q = [2]}", false).value : cat::of(5);
    bool const is_checked = text.find_first_of("=+<&;,") == std::string::npos && !(choice & throws);
    bool const is_new = is_checked && !cObj::is_good(tree.getattrp(text));
    bool const stored = tree.setattrp(text, value, (choice & force) != 0);
    if (!stored || !is_checked) return stored;
    objref const found = tree.getattrp(text);
    if (!cObj::is_good(found)) {
        if (!is_in_a_set(tree, value)) fuzz::stop("a value was stored but is missing", text, "");
    } else if (is_new && !found->equal(value)) {
        fuzz::stop("another value was stored", text, cat::as_text(found));
    }
    return stored;
}

void change(cObj &tree, std::string const &text, unsigned choice) {
    if (choice & one_value)
        set_value(tree, text, choice);
    else
        tree.setattrp(text, (choice & force) != 0);
    objref const value = tree.getattrp(text);
    if (!value) fuzz::stop("reading by a path returns null", text, "");
}

// During its lifetime, errors are thrown and not printed.
class cThrowing {
  public:
    cThrowing() : before_(cat::errhandler()) {
        cat::errhandler() = cErrHandler(0xFFFFFFFF, 0, 0xFFFFFFFF);
    }
    cThrowing(cThrowing const &) = delete;
    cThrowing &operator=(cThrowing const &) = delete;
    ~cThrowing() { cat::errhandler() = before_; }

  private:
    cErrHandler before_;
};

void change_guarded(cObj &tree, std::string const &text, unsigned choice) {
    if (choice & throws) {
        cThrowing const throwing;
        try {
            change(tree, text, choice);
        } catch (cErr const &) { // expected
        }
        return;
    }
    // Errors of operations on one value are not sent to the report. These masks prevent that they
    // are printed.
    cErrHandler const before = cat::errhandler();
    cat::errhandler().silent_mask(0xFFFFFFFF);
    cat::errhandler().throw_mask(0);
    {
        cat::ReadReport report;
        change(tree, text, choice);
    }
    cat::errhandler() = before;
}

void check_tree(objref const &tree) {
    unsigned int failed = 0;
    std::string const first = fuzz::write_text(tree, failed);
    if (failed != 0) return;
    fuzz::cReadText const again = fuzz::read_text(first, false);
    if (holds_declared(tree)) return;
    if (!again.clean) fuzz::stop("reading the written text fails", "", first);
    std::string const second = fuzz::write_text(again.value, failed);
    if (first == second) return;
    if (!holds_set(tree)) fuzz::stop("written differently the second time", first, second);
    fuzz::cReadText const third = fuzz::read_text(second, false);
    if (!third.clean) fuzz::stop("reading the text of the second writing fails", first, second);
    std::string const last = fuzz::write_text(third.value, failed);
    if (second != last) fuzz::stop("written differently the third time", second, last);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    if (size == 0) return 0;
    fuzz::cInput const input;
    unsigned const choice = *data;
    objref const tree = fuzz::read_text(choice & from_vector ? vector_text : map_text, false).value;
    change_guarded(*tree, std::string(reinterpret_cast<char const *>(data) + 1, size - 1), choice);
    check_tree(tree);
    return 0;
}
