// The entries of one container.
//
//   open    many lines: a line end
//   level   depth and indent go up
//   entry   key "= " in maps, the value, ";" or ","; around it the layout:
//             many lines: indent; behind, the value's comment, or a blank if the value itself
//             stands over many lines (its comment stands at its opening bracket); a line end
//             one line: a blank behind
//   level   ends
//   close   many lines: indent, for the closing bracket
//
// An object that was written before in the same outermost container is written as its path. The
// table is asked by identity and before anything of the value is written, so a cycle ends.
//
// An error thrown while a value is written is told and ends that value only. In exact text nothing
// of such a value is left: see exact_entry.
//
// Foreign code may remove the very entry it is called from. The walk holds its node and the next
// one; it ends early only when both are removed at once.

#include "qrv/core/cattrhash.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerr.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/cchannels.h"
#include "text/state/ctext_state.h"
#include "text/write/cline_collector.h"
#include "text/write/cscalar_text.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"

#include <algorithm>
#include <array>
#include <optional>
#include <ostream>

namespace {

class cHoldNode { // keeps the memory of a node, which may be null
  public:
    explicit cHoldNode(cAttrNode *node) : node_(node) {
        if (node_) node_->hold();
    }
    cHoldNode(cHoldNode const &) = delete;
    cHoldNode &operator=(cHoldNode const &) = delete;
    ~cHoldNode() {
        if (node_) node_->unhold();
    }

    cAttrNode *living() const { return node_ && !node_->is_dead() ? node_ : nullptr; }

  private:
    cAttrNode *node_;
};

// The object's comment. In exact text an error on the way is told and ends nothing.
bool find_comment(cObj const &obj, std::string &text) {
    if (!obj.has_ommap()) return false;
    if (!exact_text()) return obj.get_comment(text); // RUNS FOREIGN CODE, a converter
    try {
        return obj.get_comment(text);
    } catch (cErr const &error) {
        tell_error(error);
    }
    return false;
}

// A container over many lines.
bool many_lines(cObj const &value) {
    if (!value.typeflags_of(tf_container)) return false;
    cExactTables const *const tables = cExactRun::tables();
    return *cat::wformat(value) != 's' || (tables && tables->relaid.has(&value));
}

bool is_bare_set(cObj const &value) {
    return value.typeflags_of(tf_bare) && writes_by(value, cTomSet::m_write);
}

// Does the library itself write this value, in a way that can't fail half-way?
bool is_own_form(cObj const &value) {
    constexpr std::array methods = {cat::write_int,      cat::write_float,  cat::write_double,
                                    cat::write_bool,     cat::write_string, cTomMap::m_write,
                                    cTomVector::m_write, cTomSet::m_write};
    return !value.flags_of(of_exe_member) &&
           std::any_of(methods.begin(), methods.end(),
                       [&value](auto method) { return writes_by(value, method); });
}

// --- exact text: what must be put back ---

class cBlindKey { // a key that no path can name
  public:
    cBlindKey(cExactTables &tables, bool blind) : tables_(&tables), blind_(blind ? 1 : 0) {
        tables_->blind_keys += blind_;
    }
    cBlindKey(cBlindKey const &) = delete;
    cBlindKey &operator=(cBlindKey const &) = delete;
    ~cBlindKey() { tables_->blind_keys -= blind_; }

  private:
    cExactTables *tables_;
    int blind_;
};

class cOpen { // a value being written
  public:
    cOpen(cExactTables &tables, cObj const &obj)
        : tables_(tables.open.has(&obj) ? nullptr : &tables), obj_(&obj) {
        if (tables_) tables_->open.insert(obj_);
    }
    cOpen(cOpen const &) = delete;
    cOpen &operator=(cOpen const &) = delete;
    ~cOpen() {
        if (tables_) tables_->open.erase(obj_);
    }

  private:
    cExactTables *tables_;
    cObj const *obj_;
};

class cCollecting { // the collector of this stream: the one that stands, or a new one
  public:
    cCollecting(cExactTables &tables, std::ostream &os)
        : tables_(&tables), outer_(tables.collector) {
        if (outer_ && &outer_->stream() == &os) return;
        tables_->collector = &own_.emplace(os);
    }
    cCollecting(cCollecting const &) = delete;
    cCollecting &operator=(cCollecting const &) = delete;
    ~cCollecting() { tables_->collector = outer_; }

    cLineCollector &collector() const { return *tables_->collector; }
    void deliver() {
        if (own_) own_->deliver();
    }

  private:
    cExactTables *tables_;
    cLineCollector *outer_;
    std::optional<cLineCollector> own_;
};

// --- the walk ---

class cEntryWriter {
  public:
    cEntryWriter(cAttrHash const &hash, std::ostream &os, bool lines, cTypeObj const *type,
                 cObj const *holder)
        : hash_(hash), os_(&os), holder_(holder), lines_(lines),
          listed_(type && type != &cat::type_map()), set_(type == &cat::type_set()) {}
    cEntryWriter(cEntryWriter const &) = delete;
    cEntryWriter &operator=(cEntryWriter const &) = delete;
    ~cEntryWriter() = default;

    void run();
    void run_collected(cLineCollector &collector);
    // False if a value was left out without which the holder can't be read.
    bool is_whole() const { return whole_; }

  private:
    using cMade = std::optional<std::string>; // text made before; without: written straight away

    void entries();
    void plain_entry(cAttrNode const &node);
    void plain_value(cAttrNode const &node);
    void begin_entry(bool apart = false);
    void end_entry(cAttrNode const &node);
    void exact_entry(cAttrNode const &node);
    bool try_entry(cAttrNode const &node, objref const &place);
    bool make_key(cObj const &key, cMade &made);
    bool make_value(cObj const &value, cMade &made);
    bool make_reference(cObj const &value, std::string const &path, cMade &made);
    bool catch_text(cObj const &obj, cMade &made);
    void put_parts(cAttrNode const &node, cMade const &key, cMade const &value);
    void refuse(objref const &place);
    objref place_of(objref const &key) const;
    cLineCollector::cComment comment_of(cObj const &obj) const;

    cAttrHash const &hash_;
    std::ostream *os_;
    cObj const *holder_;
    bool lines_;
    bool listed_;
    bool set_;
    cTextState &state_ = text_state();
    cExactTables *tables_ = exact_text() ? cExactRun::tables() : nullptr;
    cLineCollector *collector_ = nullptr; // and then the layout isn't known yet
    size_t container_ = 0;                // there
    int count_ = 0;                       // entries written
    bool whole_ = true;
};

void cEntryWriter::run() {
    if (lines_) *os_ << std::endl;
    entries();
    if (lines_) put_blanks(*os_, state_.indent());
}

void cEntryWriter::run_collected(cLineCollector &collector) {
    collector_ = &collector;
    os_ = &collector.stream();
    container_ = collector.open(holder_ ? comment_of(*holder_) : cLineCollector::cComment());
    entries();
    if (collector.close(container_, state_.indent()) && holder_) tables_->relaid.insert(holder_);
}

void cEntryWriter::entries() {
    cWriteLevel const level;
    for (cAttrNode *node = hash_.first(); node;) {
        cHoldNode const hold(node), hold_ahead(hash_.next(node));
        if (tables_)
            exact_entry(*node);
        else
            plain_entry(*node);
        node = node->is_dead() ? hold_ahead.living() : hash_.next(node);
    }
}

// Such keys never appear in a text.
bool is_hidden(objref const &key) {
    std::string const *const text = string_of(*key);
    return text && !text->empty() && text->front() == '#';
}

void cEntryWriter::plain_entry(cAttrNode const &node) {
    if (is_hidden(node.key()) || !node.value().is_writable()) return;
    begin_entry();
    if (!listed_) {
        node.key()->writeobj(*os_); // RUNS FOREIGN CODE
        *os_ << "= ";
    }
    plain_value(node);
    end_entry(node);
}

void cEntryWriter::plain_value(cAttrNode const &node) {
    cPathStep const step(node.key());
    if (cat::is_on(cat::io_channel)) *cat::io_channel << state_.path() << std::endl;
    try {
        cObj const &value = node.value();
        std::string path;
        if (state_.written_path(&value, path)) {
            *os_ << "#cRef(" << path << ')';
        } else {
            state_.enter_written(&value);
            value.writeobj(*os_); // RUNS FOREIGN CODE
        }
    } catch (cErr const &error) {
        tell_error(error);
    }
}

void cEntryWriter::begin_entry(bool apart) {
    if (collector_)
        collector_->entry(container_, state_.indent(), apart);
    else if (lines_)
        put_blanks(*os_, state_.indent());
    ++count_;
}

void cEntryWriter::end_entry(cAttrNode const &node) {
    *os_ << (listed_ ? ',' : ';');
    cObj const &value = node.value(); // another one, if it was replaced meanwhile
    if (collector_) return collector_->after(container_, many_lines(value), comment_of(value));
    if (!lines_) {
        *os_ << ' ';
        return;
    }
    if (many_lines(value))
        *os_ << ' ';
    else
        put_comment(*os_, value);
    *os_ << std::endl;
}

// --- exact text ---

// The key under which an entry is read back: the reader counts, and what is left out isn't there.
objref cEntryWriter::place_of(objref const &key) const {
    return !listed_ || cat::as_index(key) == count_ ? key : own_key(count_);
}

cLineCollector::cComment cEntryWriter::comment_of(cObj const &obj) const {
    cLineCollector::cComment comment;
    if (!find_comment(obj, comment.text)) comment.text.clear();
    if (!exact_comment(comment.text)) comment.path = state_.shown_path(true);
    return comment;
}

void cEntryWriter::refuse(objref const &place) {
    if (holder_ && exact_needs(*holder_, place)) whole_ = false;
    std::string path = state_.shown_path(true);
    try {
        cTextForm const plain(false);
        cPathStep const step(place);
        path = state_.shown_path(true);
    } catch (cErr const &) {
        // A key without text, and told already; the path of its container must do.
    }
    tell_unwritable(path);
}

void cEntryWriter::exact_entry(cAttrNode const &node) {
    objref const place = place_of(node.key());
    cObj const &value = node.value();
    bool done = false;
    // No container takes bad or badfind when it is read.
    if ((listed_ || exact_key(node.key())) && !value.is_bad() && exact_writable(value)) {
        try {
            done = try_entry(node, place);
        } catch (cErr const &error) {
            tell_error(error);
        }
    }
    if (!done) refuse(place);
}

// Whatever may fail is made before anything is written. An entry that vanished meanwhile is no
// failure.
bool cEntryWriter::try_entry(cAttrNode const &node, objref const &place) {
    cPathStep const step(place); // RUNS FOREIGN CODE, as the two below
    cBlindKey const blind(*tables_, !listed_ && !exact_path_key(node.key()));
    cMade key, value;
    bool const made =
        make_key(*node.key(), key) && (node.is_dead() || make_value(node.value(), value));
    if (made && !node.is_dead()) put_parts(node, key, value);
    return made || node.is_dead();
}

bool cEntryWriter::make_key(cObj const &key, cMade &made) {
    return listed_ || is_own_form(key) || catch_text(key, made);
}

bool cEntryWriter::make_value(cObj const &value, cMade &made) {
    if (cat::find_const(&value)) return true;    // by name, as often as it comes
    if (tables_->open.has(&value)) return false; // what isn't closed yet can't be referred to
    std::string path;
    bool const written = state_.written_path(&value, path) && !tables_->forgotten.has(&value);
    if (written) return make_reference(value, path, made);
    size_t const before = tables_->entered.size();
    state_.enter_written(&value);
    tables_->enter(&value);
    if (is_own_form(value) || catch_text(value, made)) return true;
    tables_->forget_behind(before);
    return false;
}

bool cEntryWriter::make_reference(cObj const &value, std::string const &path, cMade &made) {
    if (tables_->unreachable.has(&value)) return false;
    made = "#cRef(" + path + ')';
    return true;
}

// The written form as a text; false, and the error told, when it can't be made.
bool cEntryWriter::catch_text(cObj const &obj, cMade &made) {
    cTextStream os(made.emplace());
    os.copyfmt(*os_);
    bool done = false;
    try {
        cOpen const open(*tables_, obj);
        done = write_form(obj, os); // RUNS FOREIGN CODE
    } catch (cErr const &error) {
        tell_error(error);
    }
    if (os.fail()) os_->setstate(std::ios_base::failbit);
    return done && !os.fail();
}

void cEntryWriter::put_parts(cAttrNode const &node, cMade const &key, cMade const &value) {
    cObj const &obj = node.value();
    bool const angle = value ? value->substr(0, 1) == "<" : is_bare_set(obj);
    begin_entry(set_ && angle && count_ == 0);
    if (!listed_) {
        if (key)
            *os_ << *key;
        else
            write_form(*node.key(), *os_);
        *os_ << "= ";
    }
    if (value) {
        *os_ << *value;
    } else {
        cOpen const open(*tables_, obj);
        write_form(obj, *os_); // RUNS FOREIGN CODE, in containers below
    }
    end_entry(node);
}

} // namespace

void put_blanks(std::ostream &os, int count) {
    static constexpr char blanks[] =
        "                                                                ";
    constexpr int most = sizeof blanks - 1;
    for (; count > 0; count -= most) os.write(blanks, std::min(count, most));
}

void put_comment(std::ostream &os, cObj const &obj) {
    std::string text;
    if (!find_comment(obj, text)) return;
    if (exact_text() && !exact_comment(text))
        tell_unwritable(text_state().shown_path(true));
    else
        os << text;
}

void tell_error(cErr const &error) {
    cat::std_err() << "cErr during write of container, path='" << text_state().path() << "':\n"
                   << error.as_string() << std::endl;
}

void tell_unwritable(std::string const &path) {
    try {
        report_unwritable(path); // RUNS FOREIGN CODE
    } catch (cErr const &error) {
        tell_error(error);
    }
}

bool write_entries(cAttrHash const &hash, std::ostream &os, char format, cTypeObj const *type,
                   cObj const *holder) {
    bool const lines = format != 's';
    std::optional<cExactRun> run;
    std::optional<cOpen> open;
    if (exact_text()) {
        run.emplace();
        if (holder) open.emplace(*cExactRun::tables(), *holder);
    }
    cEntryWriter writer(hash, os, lines, type, holder);
    if (!run || lines || !type) {
        writer.run();
        return writer.is_whole();
    }
    cCollecting collecting(*cExactRun::tables(), os);
    writer.run_collected(collecting.collector());
    collecting.deliver();
    return true; // an attribute set has no brackets to collect
}

bool cAttrHash::write_hash(std::ostream &os, char const *format, cTypeObj *type) const {
    write_entries(*this, os, format ? *format : '\0', type, nullptr);
    return true;
}
