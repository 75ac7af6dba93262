// The writer's settings, the look at a layout, and the standard methods `write` of scalars.
//
// Numbers are left to the stream they go to: its flags and its locale count. Only exact text looks
// at what the stream makes of a number, and corrects it where that wouldn't read back.

#include "qrv/text/cwriter.h"

#include "qrv/core/cobjd.h"
#include "text/cscalar_text.h"
#include "text/ctext_state.h"
#include "text/cwriter_exact.h"
#include "text/cwriter_stream.h"

#include <ios>

namespace cat {
constinit int write_indent = 4;
constinit int write_indent0 = 2;

DoWriteIndent::DoWriteIndent(int columns) : columns_(columns) { text_state().add_indent(columns_); }
DoWriteIndent &DoWriteIndent::operator=(DoWriteIndent const &other) noexcept {
    columns_ = other.columns_;
    return *this;
}
DoWriteIndent::~DoWriteIndent() { text_state().add_indent(-columns_); }

char const *wformat(cObj const &obj) {
    objref const member = obj.gmember("wformat");
    if (cObj::is_void(member)) return "";
    std::string const *const text = string_of(*member);
    return text ? text->c_str() : "";
}
} // namespace cat

namespace {
std::ostream *stream_of(objref const &args) {
    auto const *const holder = dynamic_cast<cOutHolder const *>(args.get());
    return holder ? holder->valptr() : nullptr;
}

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

void put(std::ostream &os, double value) {
    cKeepFlags const keep(os);
    os << std::showpoint << value;
}

void put(std::ostream &os, float value) {
    cKeepFlags const keep(os);
    os << std::showpoint << value << 'f';
}

template <class T> bool put_exact(std::ostream &os, T value) {
    std::string plain;
    cTextStream as_given(plain);
    as_given.copyfmt(os);
    put(as_given, value);
    os.width(0);
    std::string text;
    append_exact(text, plain, value);
    os << text;
    if (text.empty()) report_unwritable();
    return !text.empty();
}

template <class T> bool write_number(cObj const &obj, objref const &args) {
    std::ostream *const os = stream_of(args);
    T const *const value = value_of<T>(obj);
    if (!os || !value) return false;
    if (exact_text()) return put_exact(*os, *value);
    put(*os, *value);
    return true;
}
} // namespace

bool cat::write_int(cObj &obj, objref &args) { return write_number<int>(obj, args); }
bool cat::write_float(cObj &obj, objref &args) { return write_number<float>(obj, args); }
bool cat::write_double(cObj &obj, objref &args) { return write_number<double>(obj, args); }

bool cat::write_bool(cObj &obj, objref &args) {
    std::ostream *const os = stream_of(args);
    bool const *const value = value_of<bool>(obj);
    if (!os || !value) return false;
    *os << bool_text(obj, *value);
    return !os->bad();
}

bool cat::write_string(cObj &obj, objref &args) {
    std::ostream *const os = stream_of(args);
    std::string const *const value = value_of<std::string>(obj);
    if (!os || !value) return false;
    std::string text;
    append_string(text, *value, exact_text());
    *os << text;
    return true;
}

bool cat::write_voiddata(cObj &obj, objref &args) {
    std::ostream *const os = stream_of(args);
    if (!os) return false;
    *os << "/* id=" << obj.obid() << ", refs=" << obj.refs() << " */" << std::flush;
    return true;
}
