// Reading attribute specifications, the types created from them, and the objects of these types.
//
// An attspec(...) has its own brackets, so its text is scanned separately.

#include "qrv/containers/cattrset.h"

#include "containers/cattspec_words.h"
#include "core/cscalar.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_session.h"
#include "text/read/csource_recorder.h"
#include "text/state/cstream_of.h"
#include "text/state/ctext_state.h"

#include <istream>
#include <ostream>

namespace {

// The errors of a `read` method about its whole value have the position where the value begins.
class cValueReport {
  public:
    explicit cValueReport(std::istream &is)
        : scan_(is, false), reading_(scan_), place_(cReadSession::current()->value_place()) {
        cReadSession::current()->refresh_limit();
    }
    cValueReport(cValueReport const &) = delete;
    cValueReport &operator=(cValueReport const &) = delete;
    ~cValueReport() = default;

    bool fail(cErr const &error) {
        scan_.about(place_.line, place_.column);
        scan_.fire(error);
        return false;
    }

    cat::cSourceRecorder *source() const { return cat::cSourceRecorder::at(scan_); }

    // Whether nothing is left to read.
    bool at_end() {
        cAttrLiteral token;
        if (scan_.gettok(token) == tkEof) return true;
        scan_.ungettoken(token);
        return false;
    }

    // Shows the object to the report's watch, so that it can find the violated rule.
    static void invalid(cObj &object) {
        cat::ReadReport const *const report = cat::ReadReport::current();
        if (report && report->watch()) report->watch()->invalid(object);
    }

    // Whether the created data exceeds the budget for the text that was read.
    bool too_much() {
        if (!cat::merge_exhausted()) return false;
        std::string const path = shown_path();
        begin_error(scan_, err_read_too_much) << path;
        scan_.about(place_.line, place_.column);
        scan_.fire();
        return true;
    }

  private:
    cAttrScan scan_;
    cReading reading_;
    cReadSession::cPlace place_;
};

bool read_type(cMapObj &entries, cAttspec &spec, cValueReport &report) {
    objref const value = entries.getattr(own_key(std::string("type")));
    if (cObj::is_kill(value)) {
        spec.set_type(nullptr);
        return true;
    }
    objref const found = cat::type_of_key(value);
    auto *const type = dynamic_cast<cTypeObj *>(found.get());
    if (cObj::is_bad(found) || !type) {
        auto const *const word = cat::value_in<std::string>(value.get());
        return report.fail(
            whole_error(err_attspec_entry, cNamed::name(word ? *word : "").unsaid()));
    }
    spec.share_type(typeref::share(type));
    return true;
}

void read_default(cMapObj &entries, cAttspec &spec) {
    objref const value = entries.getattr(own_key(std::string("default")));
    if (cObj::is_void(value))
        spec.set_default(nullptr, true);
    else
        spec.set_default(value, false);
}

} // namespace

bool cTomAttspec::m_read(cObj &obj, objref &stream) {
    auto *const spec = dynamic_cast<cAttspec *>(&obj);
    std::istream *const is = in_of(stream);
    if (!spec || !is) return false;
    objref const keep = objref::share(&obj);
    cValueReport report(*is);
    objref value;
    if (cat::scan_container(*is, value, true) != 0 || !cObj::is_map(value)) return false;
    auto &entries = static_cast<cMapObj &>(*value);
    if (!read_type(entries, *spec, report)) return false;                                // 1
    read_default(entries, *spec);                                                        // 2
    int const flags = cat::flags_of_word(entries.getattr(own_key(std::string("flag")))); // 3
    if (flags) spec->set_flags(flags);
    return true;
}

bool cTomAttlist::m_read(cObj &type, objref &stream) {
    auto const *const attlist = dynamic_cast<cTypeObj const *>(&type);
    std::istream *const is = in_of(stream);
    if (!attlist || !is) return false;
    objref const keep = objref::share(&type);
    objref const member = attlist->tmember("attspec");
    auto *const specs = dynamic_cast<cMapObj *>(member.get());
    if (!specs) return false;
    specs->clear(); // RE-ENTERS
    int const lines = specs->datamap_ref()->read_hash(*is, nullptr);
    type.changed(); // RE-ENTERS
    return lines != 0;
}

bool cTomAttrset::m_read(cObj &obj, objref &stream) {
    std::istream *const is = in_of(stream);
    if (!is) return false;
    objref const keep = objref::share(&obj);
    cValueReport report(*is);
    cRef<cMapObj> const read = make<cMapObj>(&obj.type(), true); // 1
    bool const nothing = read->size() == 0 && report.at_end();   // no attributes, and no text
    if (!nothing && read->datamap_ref()->read_hash(*is, nullptr) < 1) return false; // 2
    if (!validate(*read)) {                                                         // 3
        cValueReport::invalid(*read);
        return report.fail(whole_error(err_read_not_valid, cNamed::type(obj.type().name())));
    }
    obj.assign(*read); // 4
    if (auto *const source = report.source()) source->moved_inside(*read, obj);
    return !report.too_much();
}
