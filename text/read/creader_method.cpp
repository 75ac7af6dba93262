// The entry points for reading values and containers: cObj::readobj, the methods `read` of the
// container types and of types that are read as one value or as entries, lists of entries without
// brackets, and the conversion of literal tokens.

#include "base/cnumber.h"
#include "core/cbuiltin.h"
#include "diagnostics/cerrline.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_hash.h"
#include "text/read/creader_session.h"
#include "text/read/creader_value.h"
#include "text/read/cscan_text.h"
#include "text/read/csource_recorder.h"
#include "text/scan/cmemory_stream.h"
#include "text/state/cstream_of.h"
#include "text/state/ctext_state.h"

int cObj::readobj(std::istream &is, objref &result, int *delim) {
    return cAttrScan(is, false).scan_obj(result, delim);
}

int cObj::readobj(char const *text, objref &result, int *delim) {
    std::string const copy(text ? text : ""); // user code may change the caller's text
    cMemoryStream is(copy);
    cAttrScan scan(is, false);
    if (copy.find('\n') == std::string::npos) scan.set_oneline();
    return scan.scan_obj(result, delim);
}

// --- literals ---

namespace {
template <class T>
bool convert(bool (*parse)(std::string_view, T &) noexcept, std::string_view text, objref &result) {
    T number{};
    if (!parse(text, number)) return false;
    result = cat::make_value(number);
    return true;
}

bool read_bool(std::string_view text, objref &result) {
    if (text != "true" && text != "false") return false;
    result = cat::make_value(text == "true");
    return true;
}

objref unquoted(std::string_view quoted) {
    if (quoted.size() >= 2) quoted = quoted.substr(1, quoted.size() - 2);
    std::string text(quoted);
    if (quoted.find('\\') != std::string_view::npos) cat::unescape(text);
    return cat::make_value(std::move(text));
}

bool read_const(std::string_view text, objref &result) {
    cMapObj *const constants = cat::constmap_ptr();
    if (!constants || text.empty() || text.front() != '#') return false;
    cAttrNode const *const node = constants->datamap().find(std::string(text.substr(1)));
    if (!node || !node->valref()) return false;
    result = node->valref();
    return true;
}
} // namespace

bool literal_value(int token, std::string_view text, objref &result) {
    switch (token) {
    case tkInt:
        return convert<int>(cat::parse_int, text, result);
    case tkUnsigned:
        return convert<int>(cat::parse_unsigned, text, result);
    case tkFloat:
        return convert<float>(cat::parse_float, text, result);
    case tkDouble:
        return convert<double>(cat::parse_double, text, result);
    case tkBool:
        return read_bool(text, result);
    case tkString:
        result = unquoted(text);
        return true;
    case tkConst:
        return read_const(text, result);
    case tkIdent:
        result = cat::make_value(std::string(text));
        return true;
    default:
        return false;
    }
}

bool cat::read_stdtype(int token, char const *text, objref &result) {
    return text && literal_value(token, text, result);
}

// --- the containers ---

namespace {
bool is_one_line(cObj const &obj) { return *cat::wformat(obj) == 's'; }

// Records the layout of the text, if the object's layout differs.
void keep_layout(cObj &obj, cAttrScan &scan, bool was_one_line, bool one_line) {
    scan.note_object(one_line ? objref::share(&obj) : objref());
    if (one_line != was_one_line)
        obj.set_omember(std::string("wformat"), cat::of(one_line ? "sc" : "wc"));
}

bool read_container(cObj &obj, objref const &args, cTypeObj &type) {
    std::istream *const is = in_of(args);
    auto *const map = dynamic_cast<cMapObj *>(&obj);
    if (!is || !map) return false;
    hashref const hash = map->datamap_ref();
    int const lines = hash->read_hash(*is, &type);
    if (lines < 1) return false;
    bool const was_one_line = is_one_line(obj);
    cAttrScan scan(*is, false);
    keep_layout(obj, scan, was_one_line, lines == 1);
    return true;
}
} // namespace

// Equivalent to the library's `read` of this type, without a stream and a scan for each container.
bool cAttrScan::read_inner(cMapObj &map, cTypeObj &type) {
    hashref const hash = map.datamap_ref();
    int lines = 0;
    {
        cWriteLevel const level;
        cInner const inner(*this);
        lines = cHashReader(*hash, *this, &type, cHashReader::cOpened::by_scan).read();
    }
    if (lines < 1) return false;
    bool const was_one_line = is_one_line(map);
    connect_handler();
    keep_layout(map, *this, was_one_line, lines == 1);
    return true;
}

bool cAttrScan::reads_entries(cTypeObj const &type) {
    auto const is_read_by = [&type](cProcedure2 method) {
        return type.method(mid_read) == reinterpret_cast<cVoidFunction>(method);
    };
    return is_read_by(&type == &cat::type_map()      ? cTomMap::m_read
                      : &type == &cat::type_vector() ? cTomVector::m_read
                                                     : cTomSet::m_read);
}

bool cTomMap::m_read(cObj &obj, objref &stream) {
    return read_container(obj, stream, cat::type_map());
}

bool cTomVector::m_read(cObj &obj, objref &stream) {
    return read_container(obj, stream, cat::type_vector());
}

bool cTomSet::m_read(cObj &obj, objref &stream) {
    return read_container(obj, stream, cat::type_set());
}

bool cTomOmmap::m_read(cObj &obj, objref &stream) {
    std::istream *const is = in_of(stream);
    if (!is) return false;
    if (!obj.has_ommap()) obj.ommap(make<cAttrHash>(&obj));
    hashref const hash = obj.ommap_ref();
    hash->clear();
    return hash->read_hash(*is, nullptr) > 0;
}

// --- types that are read as one value, or as entries ---

bool cat::read_voiddata(cObj &, objref &) { return true; }

bool cat::scan_attrset(cObj &obj, objref &args) {
    std::istream *const is = in_of(args);
    if (!is) return false;
    cAttrScan scan(*is, false);
    cReading const reading(scan);
    objref value;
    if (scan.scan_obj(value, nullptr) != 0) return false;
    cReadSession::cPlace const place = cReadSession::current()->value_place();
    bool const same = &value->type() == &obj.type();
    if (same ? obj.assign(*value) : obj.convert(value)) { // RUNS USER CODE
        if (auto *const source = cat::cSourceRecorder::at(scan)) source->moved(*value, obj);
        return true;
    }
    begin_error(scan, same ? err_read_assign : err_read_convert)
        << cNamed::type(obj.type().name()) << cNamed::found(value->type().name()).unsaid();
    scan.about(place.line, place.column);
    scan.fire();
    return false;
}

bool cat::scan_attrcopy(cObj &obj, objref &args) {
    std::istream *const is = in_of(args);
    if (!is) return false;
    cMergeBudget *const budget = cMergeBudget::current();
    cAttrScan scan(*is, false);
    cReading const reading(scan); // so that an entry cannot cause loading
    std::string const type = obj.type().name();
    objref const entries = make<cMapObj>();
    if (static_cast<cMapObj &>(*entries).datamap().read_hash(*is, nullptr) == 0) {
        error_line(whole_error(err_entries_unread, cNamed::type(type)));
        return false;
    }
    cMergeBudgetUse const as_before(budget); // an outer reading's, or none for a program's call
    try {
        objref const fresh = obj.type().newobj();
        if (cObj::is_bad(fresh)) return false;
        bool const filled = fresh->attrcopy(*entries, "-a-");
        bool const assigned = obj.assign(*fresh);
        auto *const source = cat::cSourceRecorder::at(scan);
        if (source && assigned) source->moved_inside(*entries, obj);
        return assigned && filled;
    } catch (cErr const &error) {
        error_line(whole_error(err_entries_refused, cNamed::type(type), "': ", error.as_string()));
        return false;
    }
}

// --- a container or a bare list of entries ---

namespace {
int not_valid(cAttrScan &scan, cReadSession::cPlace place, cErrText const &error,
              std::string const &what = {}) {
    begin_error(scan, error) << cNamed::name(what);
    scan.about(place.line, place.column);
    scan.fire();
    return 1;
}

// `key =` was read: reads the value and the remaining entries. `errors` were counted before the
// key.
int read_entries(cAttrScan &scan, objref const &key, objref &result, bool keep, unsigned errors) {
    cWriteLevel const level;
    auto *const source = cat::cSourceRecorder::at(scan);
    cat::cSourceFrames const frames(source);
    if (source) source->begin_list_at_key();
    if (source) source->key(source->begin_of(scan.current()));
    objref value;
    int const code = cHashReader::read_first(scan, key, value);
    bool const good = code == 0 && scan.errcount() == errors;
    if (!good && !keep)
        return not_valid(scan, cReadSession::current()->value_place(), err_read_no_container);
    cRef<cMapObj> const map = make<cMapObj>();
    if (source) source->no_value();
    if (value && map->datamap().mapitem(key, value) && source)
        source->stored(map->datamap().last());
    bool const rest = cHashReader::read_others(scan, map->datamap()) != 0;
    if (rest || keep) result = map;
    if (source && frames.depth() == 0) source->root(*map);
    scan.note_object(nullptr);
    return good && rest && scan.errcount() == errors ? 0 : 1;
}

// The token after a value that `delim` has ended, and after one separator. The reader has already
// read the token after a scalar.
cAttrLiteral token_after(cAttrScan &scan, int delim) {
    bool const is_taken =
        delim == '}' || delim == ']' || delim == '>' || delim == '=' || delim <= tkEof;
    scan.return_com(false); // a comment here belongs to no value
    if (!is_taken) scan.gettok();
    if (!cat::is_separator(delim) && cat::is_separator(scan.token().code)) scan.gettok();
    return scan.token();
}
} // namespace

void cat::scan_text(cAttrScan &scan, objref &result) {
    cReading const reading(scan);
    unsigned const errors = scan.errcount();
    int delim = 0;
    int const code = scan.scan_obj(result, &delim);
    bool const is_list = code == 0 && delim == '=' && result->type().is_keytype();
    if (is_list) read_entries(scan, objref(result), result, true, errors);
    if (scan.errcount() != errors || code > 0) return;
    if (code < 0) {
        begin_error(scan, err_read_nothing);
        return scan.fire();
    }
    cAttrLiteral const next = is_list ? scan.token() : token_after(scan, delim);
    if (cat::is_end(next)) return;
    begin_error(scan, err_read_text_behind) << cNamed::name(next.text);
    scan.about(next);
    scan.fire();
}

int cat::scan_container(std::istream &is, objref &result, bool keep) {
    cAttrScan scan(is, true);
    cReading const reading(scan);
    unsigned const errors = scan.errcount();
    objref first;
    int delim = 0;
    int const code = scan.scan_obj(first, &delim);
    if (code != 0) return code;
    bool const failed = scan.errcount() != errors;
    if (first->is_container() && (!failed || keep)) {
        result = first;
        return failed ? 1 : 0;
    }
    if (failed && !keep) return 1;
    if (first->type().is_keytype() && delim == '=')
        return read_entries(scan, first, result, keep, errors);
    cReadSession::cPlace const place = cReadSession::current()->value_place();
    std::string const text = as_text(first); // RUNS USER CODE
    return not_valid(scan, place, err_read_no_start, text);
}
