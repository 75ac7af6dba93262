// Layouts, names and quoting, and the standard methods `write` of scalars.
//
// A stream with its own flags or locale formats its numbers itself. Exact text examines the result,
// and corrects it if it would not read as the same number.

#include "qrv/text/write/cwriter.h"

#include "base/platform/cchars.h"
#include "core/cmember_lookup.h"
#include "qrv/core/cobjd.h"
#include "text/state/cstream_of.h"
#include "text/state/ctext_state.h"
#include "text/write/cscalar_text.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"
#include "text/write/cwriter_stream.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <ios>
#include <locale>
#include <type_traits>

char const *cat::wformat(cObj const &obj) {
    static cMemberName const name("wformat");
    objref const member = member_named(obj, name);
    std::string const *const text = cObj::is_good(member) ? string_of(*member) : nullptr;
    return text ? text->c_str() : "";
}

char layout_of(cObj const &obj, cComposer &out) {
    if (!asks_user_code(obj.ommap_ptr()) && !asks_user_code(&obj.type().tmmap()) &&
        !asks_user_code(core.global_hash))
        return *cat::wformat(obj);
    cUserCode const user(out);
    return *cat::wformat(obj);
}

// --- names and quoting: one pass each, since erasing and inserting in place would be quadratic ---

namespace {
// Length of the name at the start of the text.
size_t ident_length(std::string const &text) {
    if (text.empty() || !is_letter(text.front())) return 0;
    auto const end = std::find_if(text.begin(), text.end(),
                                  [](char c) { return !is_letter(c) && !is_digit(c); });
    return static_cast<size_t>(end - text.begin());
}
} // namespace

bool cat::is_ident(std::string const &text) {
    return !text.empty() && ident_length(text) == text.size();
}

bool cat::escape(std::string &text) {
    if (is_ident(text)) return true;
    if (text.find_first_of("\"\\'") == std::string::npos) return false;
    std::string result;
    result.reserve(text.size() + text.size() / 8 + 1);
    for (char const c : text) {
        if (c == '"' || c == '\\' || c == '\'') result += '\\';
        result += c;
    }
    text = std::move(result);
    return false;
}

int cat::unescape(std::string &text) {
    int removed = 0;
    size_t to = 0;
    for (size_t from = 0; from < text.size(); ++from) {
        if (text[from] == '\\') {
            ++removed;
            if (++from == text.size()) break;
        }
        text[to++] = text[from];
    }
    text.resize(to);
    return removed;
}

// --- the methods `write` ---

namespace {
class cKeepFlags {
  public:
    explicit cKeepFlags(std::ostream &os) : os_(&os), flags_(os.flags()) {}
    cKeepFlags(cKeepFlags const &) = delete;
    cKeepFlags &operator=(cKeepFlags const &) = delete;
    ~cKeepFlags() { os_->flags(flags_); }

  private:
    std::ostream *os_;
    std::ios_base::fmtflags flags_;
};

void put(std::ostream &os, int value) { os << value; }

// Whether the stream has its initial settings. The numbers of such streams are formatted here, so
// that files are the same on all systems: streams use the C library, and some C libraries drop the
// zeros if rounding carries ("1.e+06" for 999999.5).
bool is_fresh(std::ostream const &os) {
    constexpr auto fixed =
        std::ios_base::floatfield | std::ios_base::showpos | std::ios_base::uppercase;
    return !(os.flags() & fixed) && os.precision() == 6 && os.width() == 0 &&
           os.getloc() == std::locale::classic();
}

template <std::floating_point T> void put(std::ostream &os, T value) {
    if (is_fresh(os)) {
        std::string text;
        append_number(text, value);
        os << text;
        return;
    }
    cKeepFlags const keep(os);
    os << std::showpoint << value;
    if (std::is_same_v<T, float>) os << 'f';
}

template <class T> std::string exact_form(std::ostream &os, T value) {
    std::string plain, text;
    cTextStream as_given(plain);
    as_given.copyfmt(os);
    put(as_given, value);
    os.width(0);
    append_exact(text, plain, value);
    return text;
}

template <class T> bool put_exact(cComposer &out, T value) {
    bool done = false;
    if (out.composing()) {
        char *const to = out.space(most_number_text), *const end = put_exact_number(to, value);
        out.use_to(end);
        done = end != to;
    } else {
        std::string const text = exact_form(out.stream(), value);
        out.put(text);
        done = !text.empty();
    }
    if (done) return true;
    cUserCode const user(out);
    report_unwritable();
    return false;
}

template <class T> bool write_number(cObj const &obj, cComposer &out) {
    T const *const value = value_of<T>(obj);
    if (!value) return false;
    if (exact_text()) return put_exact(out, *value);
    if (out.composing())
        out.use_to(put_number(out.space(most_number_text), *value));
    else
        put(out.stream(), *value);
    return true;
}

bool write_text(cObj const &obj, cComposer &out) {
    std::string const *const value = value_of<std::string>(obj);
    if (!value) return false;
    size_t const most = most_string_text(*value);
    if (out.composing() && most <= cComposer::most_space) {
        out.use_to(put_string(out.space(most), *value, exact_text()));
    } else {
        std::string text;
        append_string(text, *value, exact_text());
        out.put(text);
    }
    return true;
}

bool write_truth(cObj const &obj, cComposer &out) {
    bool const *const value = value_of<bool>(obj);
    if (!value) return false;
    out.put(bool_text(obj, *value));
    return !out.stream().bad();
}

bool write_to(objref const &args, cObj const &obj, cForm form) {
    std::ostream *const os = out_of(args);
    if (!os) return false;
    cComposer out(*os);
    return write_scalar(obj, form, out);
}
} // namespace

bool write_scalar(cObj const &obj, cForm form, cComposer &out) {
    switch (form) {
    case cForm::string:
        return write_text(obj, out);
    case cForm::integer:
        return write_number<int>(obj, out);
    case cForm::dbl:
        return write_number<double>(obj, out);
    case cForm::single:
        return write_number<float>(obj, out);
    case cForm::boolean:
        return write_truth(obj, out);
    default:
        return false;
    }
}

bool cat::write_int(cObj &obj, objref &args) { return write_to(args, obj, cForm::integer); }
bool cat::write_float(cObj &obj, objref &args) { return write_to(args, obj, cForm::single); }
bool cat::write_double(cObj &obj, objref &args) { return write_to(args, obj, cForm::dbl); }
bool cat::write_bool(cObj &obj, objref &args) { return write_to(args, obj, cForm::boolean); }
bool cat::write_string(cObj &obj, objref &args) { return write_to(args, obj, cForm::string); }

bool cat::write_voiddata(cObj &obj, objref &args) {
    std::ostream *const os = out_of(args);
    if (!os) return false;
    *os << "/* id=" << obj.obid() << ", refs=" << obj.refs() << " */" << std::flush;
    return true;
}
