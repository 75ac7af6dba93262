// The list of errors: each error is caused once, and has the listed code and beginning of its text.

#include "diagnostics/cerr_codes.h"

#include "core/cerr_object.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"
#include "tests/support/types.h"
#include "text/read/cscan_text.h"

#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace {

using cErrors = std::vector<cErrorLog::cEntry>;

// Returns everything that is raised, reported by a scanner or thrown during `act`, without position
// and path.
cErrors errors_of(std::function<void()> const &act) {
    cErrorLog log;
    cat::ReadReport report;
    cErrors all;
    try {
        act();
    } catch (cErr const &error) {
        all.push_back({error.code(), error.as_string()});
    }
    for (cat::ReadError const &error : report.entries()) all.push_back({error.code, error.text});
    all.insert(all.end(), log.entries().begin(), log.entries().end());
    return all;
}

// Returns whether the message contains `text` directly after its head.
bool begins_with(std::string const &message, cErrHead head, std::string const &text) {
    char const *const begin = head == cErrHead::object      ? "Attr value, type '"
                              : head == cErrHead::attribute ? "Setattr in object type '"
                                                            : "";
    bool const has_head = *begin != 0;
    if (!has_head) return message.starts_with(text);
    return message.starts_with(begin) && message.find("': " + text) != std::string::npos;
}

bool is_among(cErrors const &errors, cErrText const &wanted) {
    for (cErrorLog::cEntry const &error : errors)
        if (error.code == wanted.code && begins_with(error.text, wanted.head, wanted.text))
            return true;
    return false;
}

using test::key;

void read_whole(std::string const &text) {
    std::istringstream is(text);
    cAttrScan scan(is, false);
    objref value;
    cat::scan_text(scan, value);
}

objref read(std::string const &text) {
    std::istringstream is(text);
    cAttrScan scan(is, false);
    objref value;
    scan.scan_obj(value, nullptr);
    return value;
}

void read_container(std::string const &text) {
    std::istringstream is(text);
    objref value;
    cat::scan_container(is, value, false);
}

void set_by_path(std::string const &text) { read("{a= {}; n= 1; }")->setattrp(text, false); }

using test::spec_with;

// A map whose attribute "a" has this specification.
cRef<cMapObj> specified(specref const &spec) {
    cRef<cMapObj> const map = make<cMapObj>();
    map->set_attspec(key("a"), spec);
    return map;
}

// An object `o` of a type that requires the key `n` and allows other keys such as `m`.
objref declared() {
    return read("{ECRec= attlist(n= attspec(flag= #REQUIRED); m= attspec(flag= #IMPLIED)); "
                "o= ECRec(n= 1); }")
        ->getattr(key("o"));
}

cTypeObj &add_type(char const *name, cFunction1 newobj, bool readable = true) {
    typeref const type = make<cTypeObj>(name);
    cTypeInsert::insert(type, false);
    if (newobj) type->set_tmember("newobj", make<cExeMember>(newobj));
    type->set_tmember("read", readable ? make<cExeMember>(cat::scan_attrset) : objref());
    return *type;
}

using test::new_bad, test::new_throwing, test::new_own, test::no_args, test::procedure_1;
objref new_const_int(objref) {
    objref const number = cat::of(1);
    number->setflags(of_const);
    return number;
}
objref new_map(objref) { return make<cMapObj>(); }
bool throwing_assign(cObj &, objref &) { throw cErr(0x40000000, "refused"); }

// The type of the object reads its text by scan_attrcopy.
void read_entries(cTypeObj &type, char const *text) {
    cMapObj object(&type, true);
    std::istringstream is(text);
    objref args = make<cInHolder>(is);
    cat::scan_attrcopy(object, args);
}

cRef<cMapObj> chain(int levels) {
    cRef<cMapObj> level = make<cMapObj>();
    for (int i = 0; i < levels; ++i) {
        cRef<cMapObj> const outer = make<cMapObj>();
        outer->datamap().mapitem("k", level);
        level = outer;
    }
    return level;
}

void set_spec(char const *name, objref const &value) {
    specref const spec = spec_with(cat::of(1), asf_implied);
    spec->setattr(key(name), value);
}

void assign_over_a_locked_node() {
    cRef<cMapObj> const map = make<cMapObj>();
    map->datamap().mapitem("k", cat::of(1));
    cAttrNode *const node = map->datamap().find("k");
    node->cObjBase::flags(2);
    *node = cat::of("text");
}

void assign_what_fails() {
    objref const target = declared();
    objref const source = target->clone(false);
    source->setattr(key("m"), cat::of("text"));
    target->setattr(key("m"), make<cMapObj>()); // the value must not be a map
    target->assign(*source);
}

void merge_without_end() {
    std::string text = "{ m = { v = [1; 2] };\n";
    for (int i = 0; i < 60; ++i) text += "m = { v = #cRef(/m/v) };\n";
    read(text + "}");
}

void nest_too_deep() {
    int const before = std::exchange(cat::max_read_depth, 2);
    read("[[[1]]]");
    cat::max_read_depth = before;
}

class ErrorCodes : public QrvTest {
  private:
    cTypesBack types_;
};

// The action that raises each error, by the error's name in the list.
std::map<std::string, std::function<void()>> const acts = {
    {"err_type_name_taken", [] { cTypeInsert::insert(make<cTypeObj>("int"), true); }},
    {"err_file_not_opened",
     [] {
         std::ifstream is;
         cAttrScan(is, false).openfile("/no such file", false);
     }},
    {"err_attspec_entry", [] { read("attspec(type= nosuch)"); }},
    {"err_read_not_valid", [] { read("{ECRec= attlist(n= attspec(flag= #REQUIRED)); o= ECRec(x= 1); }"); }},
    {"err_compared_too_deep", [] { chain(60000)->equal(*chain(60000)); }},
    {"err_not_writable",
     [] {
         cat::ExactText const exact;
         cat::as_text(cat::of(std::numeric_limits<double>::infinity()));
     }},
    {"err_setattr",
     [] {
         eros_setattr(*cat::of(1), key("k"));
         raise_eros();
     }},
    {"err_cycle",
     [] {
         objref const inner = make<cMapObj>(), outer = make<cMapObj>();
         outer->setattr(key("inner"), inner);
         inner->setattr(key("outer"), outer);
     }},
    {"err_const_keys",
     [] {
         objref const map = make<cMapObj>();
         map->setflags(of_const_keys);
         map->setattr(key("k"), cat::of(1));
     }},
    {"err_key_not_int", [] { make<cVectorObj>()->setattr(key("k"), cat::of(1)); }},
    {"err_key_out_of_range", [] { make<cVectorObj>()->setattr(cat::of(7), cat::of(1)); }},
    {"err_insertion", [] { cAttr(cat::of(1), key("k")) << cat::of(1); }},
    {"err_attspec_type", [] { set_spec("flag", cat::of(1)); }},
    {"err_attspec_unknown", [] { set_spec("type", cat::of("nosuch")); }},
    {"err_attspec_attribute", [] { set_spec("other", cat::bad()); }},
    {"err_required",
     [] {
         specref const spec = specref::adopt(new cAttspec(asf_required, nullptr));
         (void)specified(spec)->getattr(key("a"));
     }},
    {"err_fixed_ref",
     [] {
         cRef<cMapObj> const map = specified(spec_with(cat::of(9), asf_fixref));
         map->setattr(key("a"), cat::of(1));
         map->setattr(key("a"), cat::of(2));
     }},
    {"err_fixed_type",
     [] { specified(spec_with(cat::of(9), asf_fixtype))->setattr(key("a"), cat::of("text")); }},
    {"err_node_type", assign_over_a_locked_node},
    {"err_assign_other_type", [] { declared()->assign(*make<cMapObj>()); }},
    {"err_assign_not_valid",
     [] {
         objref const object = declared();
         object->assign(*object->type().newobj());
     }},
    {"err_assign_failed", assign_what_fails},
    {"err_object_const", [] { new_const_int(nullptr)->assign(*cat::of(2)); }},
    {"err_no_converter", [] { cat::of(1)->assign(*make<cMapObj>()); }},
    {"err_bad_prototype", [] { (void)make<cExeMember>(procedure_1)->oexecute(); }},
    {"err_bad_call", [] { (void)cat::of(1)->call("nosuch"); }},
    {"err_arg_count", [] { (void)cat::of(1)->call("create", cat::of(1)); }},
    {"err_bad_global_call", [] { (void)cat::call("nosuch"); }},
    {"err_global_arg_count", [] { (void)cat::call("new"); }},
    {"err_not_own_member", [] { cat::of(1)->set_omember("k", make<cExeGlobal>(no_args)); }},
    {"err_missing_method",
     [] {
         cTypeObj type("ECBare");
         cMapObj(&type, true).assign(*cat::of(1));
     }},
    {"err_missing_less", [] { make<cMapObj>()->less(*make<cMapObj>()); }},
    {"err_not_type_member",
     [] {
         cTypeObj type("ECGlobal");
         type.set_tmember("create", make<cExeGlobal>(procedure_1));
     }},
    {"err_method_prototype",
     [] {
         cTypeObj type("ECWrong");
         type.set_tmember("assign", make<cExeMember>(procedure_1));
     }},
    {"err_read_equals", [] { read("= 1"); }},
    {"err_read_key_scalar", [] { read("{ 99999999999 = 1 }"); }},
    {"err_read_scalar", [] { read("99999999999"); }},
    {"err_read_too_deep", nest_too_deep},
    {"err_read_container", [] { read("["); }},
    {"err_read_unclosed_type", [] { read("int(5"); }},
    {"err_read_key", [] { read("{ int(x y) = 1 }"); }},
    {"err_read_value", [] { read("int(x)"); }},
    {"err_read_assign",
     [] {
         add_type("ECConst", new_const_int);
         read("ECConst(5)");
     }},
    {"err_read_convert", [] { read("int([1])"); }},
    {"err_read_key_type", [] { read("{ [1] = 2 }"); }},
    {"err_read_no_key", [] { read("{ 5 }"); }},
    {"err_read_no_value", [] { read("{ a = }"); }},
    {"err_read_unclosed_map", [] { read("{ a = 1"); }},
    {"err_read_unclosed_vector", [] { read("[ 1"); }},
    {"err_read_unclosed_set", [] { read("< 1"); }},
    {"err_read_too_much", merge_without_end},
    {"err_read_no_container", [] { read_container("a = nosuch(1)"); }},
    {"err_read_no_start", [] { read_container("5"); }},
    {"err_path_slash", [] { set_by_path("a/ /b = 1"); }},
    {"err_path_no_key", [] { set_by_path("= 1"); }},
    {"err_path_no_operator", [] { set_by_path("a"); }},
    {"err_path_no_separator", [] { set_by_path("a b = 1"); }},
    {"err_path_absent", [] { set_by_path("x/y = 1"); }},
    {"err_path_operator", [] { set_by_path("x << 1"); }},
    {"err_read_token", [] { read("? 1"); }},
    {"err_read_bad_ident", [] { read("12x"); }},
    {"err_read_no_delimiter", [] { read("{ a = 5 b = 1 }"); }},
    {"err_read_word_end", [] { read("{ a = x y = 1 }"); }},
    {"err_read_ref_bracket", [] { read("{ a = #cRef; }"); }},
    {"err_read_ref", [] { read("{ a = #cRef(/b); }"); }},
    {"err_read_ref_path", [] { read("{ a = nosuch(1); b = #cRef(/a); }"); }},
    {"err_read_constant", [] { read("#nosuch"); }},
    {"err_read_key_unknown", [] { read("{ nosuch(1) = 2 }"); }},
    {"err_read_value_unknown", [] { read("nosuch(1)"); }},
    {"err_read_no_newobj",
     [] {
         add_type("ECNoNew", nullptr);
         read("ECNoNew(1)");
     }},
    {"err_read_no_read",
     [] {
         add_type("ECNoRead", new_bad, false);
         read("ECNoRead(1)");
     }},
    {"err_read_bad_newobj",
     [] {
         add_type("ECBadNew", new_bad);
         read("ECBadNew(1)");
     }},
    {"err_read_type_name", [] { read("{int= attlist(); }"); }},
    {"err_read_separator", [] { read(";; 1"); }},
    {"err_read_text_behind", [] { read_whole("{} 7"); }},
    {"err_read_nothing", [] { read_whole(" // c"); }},
    {"err_read_exception",
     [] {
         add_type("ECThrows", new_throwing);
         read("ECThrows(1)");
     }},
    {"err_cannot_insert", [] { read("{ a = #bad; }"); }},
    {"err_entries_unread", [] { read_entries(add_type("ECUnread", new_map), "a= 1; b= #bad"); }},
    {"err_entries_refused",
     [] {
         cTypeObj &type = add_type("ECRefuses", new_map);
         type.set_tmember("assign", make<cExeMember>(throwing_assign));
         read_entries(type, "a= 1");
     }},
    {"err_duplicate_type", [] { cTypeInsert::insert(make<cTypeObj>("int"), false); }},
    {"err_getattrp_path", [] { (void)read("{a= {}; }")->getattrp("a/?"); }},
};

std::vector<std::pair<std::string, cErrText>> const errors = {
#define QRV_ERROR_ENTRY(kind, code, head, text) {"err_" #kind, err_##kind},
    QRV_ERRORS(QRV_ERROR_ENTRY)
#undef QRV_ERROR_ENTRY
};

// By the error's name in the list: position, path, code and text in a report, and the key and type
// that it names.
std::map<std::string, std::string> const entries = {
    {"err_type_name_taken", "thrown: Fatal: duplicate name of cTypeObj: int | type int"},
    {"err_file_not_opened", "1:1  0x1 Cannot open file: /no such file | name /no such file"},
    {"err_attspec_entry", "1:1  0x40000000 Wrong type-entry in attspec | name nosuch"},
    {"err_read_not_valid", "1:50 /o 0x40000000 Validate error in read of type: ECRec | type ECRec"},
    {"err_compared_too_deep",
     "2:14 /v 0x40000001 Nesting is too deep in object type: map | type map"},
    {"err_not_writable", "2:14 /v 0x40000001 Value cannot be written, path : /v | key /v"},
    {"err_setattr",
     "2:14 /v 0x40020000 Setattr in object type 'int', key 'k':  | key k | type int"},
    {"err_cycle", "2:14 /v 0x40020000 Setattr in object type 'map', key 'outer':  Trial to "
                  "establish cRef in cycle | key outer | type map"},
    {"err_const_keys", "2:14 /v 0x40020000 Setattr in object type 'map', key 'k':   Flag of const "
                       "key set offended | key k | type map"},
    {"err_key_not_int", "2:14 /v 0x40020000 Setattr in object type 'vector', key 'k':   Key of "
                        "vector or set must be 'int' | key k | type vector"},
    {"err_key_out_of_range", "2:14 /v 0x40020000 Setattr in object type 'vector', key '7':   Key "
                             "is OUT OF RANGE | key 7 | type vector"},
    {"err_insertion", "2:14 /v 0x40020000 Setattr in object type 'int', key 'k': Inserting "
                      "cAttr::operator<< is not defines in type: int | key k | type int"},
    {"err_attspec_type", "2:14 /v 0x40020000 Setattr in object type 'attspec', key 'flag':  Error "
                         "in setting attribute type: int | key flag | type attspec | found int"},
    {"err_attspec_unknown",
     "2:14 /v 0x40020000 Setattr in object type 'attspec', key 'type':  Error in setting BAD type: "
     "nosuch | key type | type attspec | name nosuch"},
    {"err_attspec_attribute", "2:14 /v 0x40020000 Setattr in object type 'attspec', key 'other':  "
                              "Error in setting BAD attribute | key other | type attspec"},
    {"err_required", "2:14 /v 0x40040000 REQUIRED attribute, key 'a' in object type 'map'  is "
                     "missed | key a | type map"},
    {"err_fixed_ref",
     "2:14 /v 0x40040000 FIXED REF attribute, key 'a' in object type 'map' | key a | type map"},
    {"err_fixed_type", "2:14 /v 0x40040000 FIXED TYPE attribute, key 'a' in object type 'map' | "
                       "key a | type map | found string"},
    {"err_node_type", "2:14 /v 0x40400000 cAttrNode, key: k  value type: int  Flags do not allow "
                      "operator= | key k | type int"},
    {"err_assign_other_type",
     "2:14 /v 0x41000000 Method 'assign' called from other type: map | type ECRec | found map"},
    {"err_assign_not_valid", "2:14 /v 0x41000000 VALIDATE ERROR in method 'assign' | type ECRec"},
    {"err_assign_failed", "2:14 /v 0x41000000 ERROR in method 'assign' | type ECRec"},
    {"err_object_const", "2:14 /v 0x41400000 Object is const. Method 'assign' called from type: "
                         "int | found int | name assign"},
    {"err_no_converter", "2:14 /v 0x41800000 Method 'assign', type 'int', without converter from "
                         "type: map | type int | found map | name assign"},
    {"err_bad_prototype", "2:14 /v 0x44000000 Executable, key '', called with bad prototype"},
    {"err_bad_call", "2:14 /v 0x44000000 Attr value, type 'int': Bad call of 'nosuch'. Method does "
                     "not exist! | type int | name nosuch"},
    {"err_arg_count", "2:14 /v 0x44000000 Attr value, type 'int': Call of 'create' with bad arg "
                      "count: 1 | type int | name create"},
    {"err_bad_global_call", "2:14 /v 0x44000000 Bad call of global method 'nosuch'  Executable "
                            "does not exist | name nosuch"},
    {"err_global_arg_count",
     "2:14 /v 0x44000000 Call of global method 'new'  with bad arg count: 0 | name new"},
    {"err_not_own_member", "2:14 /v 0x44000000 Attr value, type 'int': Inserted executable, key "
                           "'k', must be cExeMember | key k | type int"},
    {"err_missing_method", "2:14 /v 0x48000000 Call of missed standard method 'assign' in type: "
                           "ECBare | type ECBare | name assign"},
    {"err_missing_less",
     "2:14 /v 0x48000000 Attr value, type 'map': Missing method 'less' in this type | type map"},
    {"err_not_type_member",
     "2:14 /v 0x50000000 Executable, key 'create', must be cExeMember | key create"},
    {"err_method_prototype", "2:14 /v 0x50000000 Standard method 'assign'  has bad prototype in "
                             "object type: type | type type | name assign"},
    {"err_read_equals", "1:1  0x40000001 Wrong placed '=', path : "},
    {"err_read_key_scalar",
     "1:3  0x40000001 Failed to read key. Input of standard type: 99999999999 | name 99999999999"},
    {"err_read_scalar", "1:1  0x40000001 Failed to read value:  Input of standard type: "
                        "99999999999 | name 99999999999"},
    {"err_read_too_deep", "1:3 /0/0 0x40000001 Nesting is deeper than 2, path : /0/0 | name 2"},
    {"err_read_container",
     "1:1>1:2  0x40000001 Failed to read container, type vector | type vector"},
    {"err_read_unclosed_type",
     "1:4>1:6  0x40000001 Closing symbol is missed in type int, path:  | type int"},
    {"err_read_key", "1:3  0x40000001 Failed to read key, type: int | type int | follows 0"},
    {"err_read_value", "1:1  0x40000001 Failed to read value, type int | type int | follows 0"},
    {"err_read_assign",
     "1:9  0x40000001 Assign failed in read of type: int | type int | found int | follows 0"},
    {"err_read_convert",
     "1:5  0x40000001 Convert failed in read of type: int | type int | found vector"},
    {"err_read_key_type", "1:3  0x40000001 Key type 'vector' is not defined | found vector"},
    {"err_read_no_key", "1:5  0x40000001 Pattern 'key =' is missed "},
    {"err_read_no_value", "1:7 /a 0x40000001 Pattern 'key =value' is missed in path: /a"},
    {"err_read_unclosed_map", "1:1>1:8  0x40000001 Map is not closed by '}'"},
    {"err_read_unclosed_vector", "1:1>1:4  0x40000001 Vector is not closed by ']'"},
    {"err_read_unclosed_set", "1:1>1:4  0x40000001 Set is not closed by '>'"},
    {"err_read_too_much", "20:5 /m 0x40000001 Too much merged, path : /m"},
    {"err_read_no_container", "1:5  0x40000001 Input is no valid container | follows 0"},
    {"err_read_no_start", "1:1  0x40000001 Missing start pattern 'key =' at pattern: 5 | name 5"},
    {"err_path_slash", "1:4  0x40000001 ERROR in setattrp:  Bad final or duplicate / | name /"},
    {"err_path_no_key", "1:1  0x40000001 ERROR in setattrp: Bad no-key entry: = | name ="},
    {"err_path_no_operator", "1:1  0x40000001 ERROR in setattrp: Operator and value missed "},
    {"err_path_no_separator",
     "1:3  0x40000001 ERROR in setattrp: Separator / or operator expected, bad entry: b | name b"},
    {"err_path_absent", "1:1  0x40000001 Call of setattrp with not existing path: /x | key /x"},
    {"err_path_operator", "1:1  0x40000001 Call of setattrp with operator '<<' is not allowed in "
                          "case of not existing path: /x | key /x | name <<"},
    {"err_read_token", "1:1  0x40000002 Unexpected token '? | name ?"},
    {"err_read_bad_ident", "1:1  0x40000002 Bad input: 12x  String is assumed. | name 12x"},
    {"err_read_no_delimiter", "1:7 /a 0x40000002 Missing delimiter after value: 5 | name 5"},
    {"err_read_word_end", "1:7 /a 0x40000002 Missing delimiter after: x | name x"},
    {"err_read_ref_bracket", "1:7 /a 0x40000002 After #cRef delimiter '(' is missed"},
    {"err_read_ref",
     "1:7 /a 0x40000003 Error in #cRef(/b): Referenced value is not defined before. | name /b"},
    {"err_read_ref_path", "1:22 /b 0x40000003 Bad path of #cRef(/a) | name /a"},
    {"err_read_constant",
     "1:1  0x40000004 Unknown #-value (no defined const): #nosuch | name #nosuch"},
    {"err_read_key_unknown", "1:3  0x40000005 Key with unknown type='nosuch | type nosuch"},
    {"err_read_value_unknown", "1:1  0x40000005 Value with unknown type='nosuch | type nosuch"},
    {"err_read_no_newobj",
     "1:1  0x40000006 Missing object ctor 'newobj' in type: ECNoNew | type ECNoNew"},
    {"err_read_no_read", "1:1  0x40000006 Missing method 'read' in type: ECNoRead | type ECNoRead"},
    {"err_read_bad_newobj",
     "1:1  0x40000006 Bad call of  object ctor 'newobj' in type: ECBadNew | type ECBadNew"},
    {"err_read_type_name", "1:7 /int 0x40000006 Type name from input is registered with another "
                           "type-type! | type type | found attlist | name int"},
    {"err_read_separator", "1:2  0x40000007 Unnecessary separator: ; | name ;"},
    {"err_read_text_behind", "1:4  0x40000002 Text after the value: 7 | name 7"},
    {"err_read_nothing", "1:6  0x40000001 Text without a value"},
    {"err_read_exception", "1:1  0x80000000 Fatal exception in attr scanner!"},
    {"err_cannot_insert", "1:7 /a 0x0 Cannot insert key =a | key a"},
    {"err_entries_unread",
     "1:14  0x0 Error in reading data in type: ECUnread | type ECUnread | follows 0"},
    {"err_entries_refused",
     "1:5  0x0 Value assign error in read of type: 'ECRefuses': refused | type ECRefuses"},
    {"err_duplicate_type",
     "0:0  0x0 ***Error: Bad creation of duplicate type 'int'\n          Each type object is "
     "identified by its name\n          and must be created exactly once!! | type int"},
    {"err_getattrp_path", "0:0  0x0 ERROR in call of getattrp, path 'a/?', bad entry: ? | key a/?"},
};

TEST_F(ErrorCodes, each_error_is_raised_with_its_code_and_the_beginning_of_its_text) {
    for (auto const &[name, error] : errors) {
        auto const act = acts.find(name);
        ASSERT_NE(act, acts.end()) << name << ": no test raises it";
        cErrors const found = errors_of(act->second);
        EXPECT_TRUE(is_among(found, error))
            << name << "; raised first: " << (found.empty() ? "nothing" : found.front().text);
    }
    EXPECT_EQ(acts.size(), errors.size());
}

std::string named(cat::ErrorNames const &names) {
    std::string all;
    for (auto const &[role, text] : {std::pair(" | key ", &names.key),
                                     {" | type ", &names.type},
                                     {" | found ", &names.found},
                                     {" | name ", &names.name}})
        if (!text->empty()) all += role + *text;
    return all;
}

// All properties of an error in a report.
std::string whole(cat::ReadError const &error) {
    std::ostringstream os;
    os << error.line << ':' << error.column;
    if (error.end_line) os << '>' << error.end_line << ':' << error.end_column;
    os << ' ' << error.path << " 0x" << std::hex << error.code << std::dec << ' ' << error.text;
    os << named(error.names);
    if (error.follows != cat::ReadError::none) os << " | follows " << error.follows;
    return os.str();
}

// The first error of this kind that a report contains after `act`, or that `act` throws.
std::string first_of(cat::ErrorKind kind, std::function<void()> const &act) {
    cTypesBack const types;
    cErrorLog const silent;
    cat::ReadReport report;
    try {
        act();
    } catch (cErr const &error) {
        if (error.kind() == kind) return "thrown: " + error.as_string() + named(error.names());
    }
    for (cat::ReadError const &error : report.entries())
        if (error.kind == kind) return whole(error);
    return {};
}

// The action that objects of the type ECActs run when they are read.
std::function<void()> const *act_while_reading;
bool read_acting(cObj &, objref &) {
    (*act_while_reading)();
    return true;
}

std::string first_while_reading(cat::ErrorKind kind, std::function<void()> const &act) {
    act_while_reading = &act;
    return first_of(kind, [] {
        cTypeObj &type = add_type("ECActs", new_own);
        type.set_tmember("read", make<cExeMember>(read_acting));
        read("{\n v = ECActs(x) }");
    });
}

TEST_F(ErrorCodes, a_report_contains_each_error_with_its_kind_key_and_type) {
    for (auto const &[name, error] : errors) {
        auto const &act = acts.at(name);
        std::string found = first_of(error.kind, act);
        if (found.empty()) found = first_while_reading(error.kind, act);
        auto const expected = entries.find(name);
        ASSERT_NE(expected, entries.end()) << name;
        EXPECT_EQ(found, expected->second) << name;
    }
    EXPECT_EQ(entries.size(), errors.size());
}

TEST_F(ErrorCodes, errors_of_programs_have_no_kind_of_the_library) {
    eros().clear();
    begin_error(err_object_const) << cNamed::name("assign");
    EXPECT_EQ(eros().kind(), cat::ErrorKind::object_const);
    EXPECT_EQ(cErr(eros()).kind(), cat::ErrorKind::object_const) << "a copy has the same kind";
    EXPECT_EQ(eros().names().name, "") << "names are collected only for a report";
    eros().set(0x40000001, "of a program");
    EXPECT_EQ(eros().kind(), cat::ErrorKind::other);
    cat::ReadReport const report;
    begin_error(err_object_const) << cNamed::name("assign") << cNamed::type("int").unsaid();
    cErr const copy(eros());
    EXPECT_EQ(copy.names().name, "assign");
    EXPECT_EQ(copy.names().type, "int");
    EXPECT_EQ(copy.as_string(), "Object is const. Method 'assign");
    eros().clear();
    EXPECT_EQ(eros().kind(), cat::ErrorKind::other);
    EXPECT_EQ(eros().names().name, "");
    EXPECT_EQ(copy.names().name, "assign");
    cErr assigned;
    assigned = copy;
    EXPECT_EQ(assigned.kind(), copy.kind());
    EXPECT_EQ(assigned.names().type, "int");
}

TEST_F(ErrorCodes, the_texts_of_two_errors_begin_differently) {
    std::set<std::tuple<unsigned int, cErrHead, std::string>> seen;
    for (auto const &[name, error] : errors)
        EXPECT_TRUE(seen.emplace(error.code, error.head, error.text).second) << name;
}

} // namespace
