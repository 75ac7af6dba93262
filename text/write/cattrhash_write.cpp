// The entries of one container.
//
//   open    many lines: a line end
//   level   depth and indent increase
//   entry   key "= " in maps, the value, ";" or ","; around it the layout:
//             many lines: first the indent; afterwards the value's comment, or a blank if the value
//             itself spans many lines (its comment is at its opening bracket); a line end
//             one line: a blank afterwards
//   level   ends
//   close   many lines: indent, for the closing bracket
//
// An object that was written before in the same outermost container is written as its path. The
// table is searched by identity and before any part of the value is written, so a cycle ends.
//
// An error thrown while a value is written is printed and ends only that value. In exact text no
// part of such a value remains: see exact_entry.
//
// User code may remove the entry that is being written. The walk holds its node and the next one;
// it ends early only if both are removed at once.

#include "qrv/core/cattrhash.h"

#include "core/cattrhash_insert.h"
#include "core/cregistry.h"
#include "diagnostics/cerrline.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerr.h"
#include "text/state/cchannels.h"
#include "text/state/ctext_state.h"
#include "text/write/cline_collector.h"
#include "text/write/cmet_once.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"

#include <optional>
#include <ostream>
#include <utility>

namespace {

class cHoldNode { // holds the memory of a node, which may be null
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

// The object's comment; null without one. Borrowed from the object, or stored in `made`.
std::string const *find_comment(cObj const &obj, cComposer &out, std::string &made) {
    if (!obj.has_ommap()) return nullptr;
    std::optional<cUserCode> searching;
    if (asks_user_code(obj.ommap_ptr())) searching.emplace(out);
    objref const member = obj.omember("//");
    searching.reset();
    if (cObj::is_void(member)) return nullptr;
    if (std::string const *const text = string_of(*member)) return text;
    cUserCode const user(out);
    try {
        return obj.get_comment(made) ? &made : nullptr; // RUNS USER CODE, a converter
    } catch (cErr const &error) {
        if (!exact_text()) throw;
        report_error(error); // the value is still written
    }
    return nullptr;
}

// Whether it is a container over many lines.
bool many_lines(cObj const &value, cComposer &out) {
    if (!value.type().flags_of(tf_container)) return false;
    cExactTables const *const tables = cExactRun::tables();
    return layout_of(value, out) != 's' || (tables && tables->relaid.has(&value));
}

bool is_bare_set(cObj const &value) {
    return value.typeflags_of(tf_bare) && writes_by(value, cTomSet::m_write);
}

// Whether the library itself writes this value, in a way that can't fail half-way.
bool is_own_form(cObj const &value) { return form_of(value) != cForm::user; }

// --- exact text: guards ---

class cBlindKey { // a key that a path cannot name
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

class cCollecting { // for the code from here on
  public:
    cCollecting(cExactTables &tables, cLineCollector &collector)
        : tables_(&tables), outer_(std::exchange(tables.collector, &collector)) {}
    cCollecting(cCollecting const &) = delete;
    cCollecting &operator=(cCollecting const &) = delete;
    ~cCollecting() { tables_->collector = outer_; }

  private:
    cExactTables *tables_;
    cLineCollector *outer_;
};

// --- the walk ---

class cEntryWriter {
  public:
    cEntryWriter(cAttrHash const &hash, cComposer &out, bool lines, cTypeObj const *type,
                 cObj const *holder, bool lone)
        : hash_(hash), out_(&out), holder_(holder), lines_(lines),
          listed_(type && type != core.map), set_(type == core.set),
          open_(hash, {holder, tables_, listed_, lone, out.composing()}) {}
    cEntryWriter(cEntryWriter const &) = delete;
    cEntryWriter &operator=(cEntryWriter const &) = delete;
    ~cEntryWriter() = default;

    void run();
    void run_collected(cLineCollector &collector, cComposer &into);
    // False if an omitted value makes the holder unreadable.
    bool is_whole() const { return whole_; }
    // In exact text: whether the entries are written as tokens, without a line end and without
    // anything that must be recorded.
    bool is_flat() const;

  private:
    using cMade = std::optional<std::string>; // text created before; empty: write directly

    void entries();
    bool is_composed(cAttrNode const &node);
    void composed_entry(cAttrNode const &node);
    void plain_entry(cAttrNode const &node);
    void plain_value(cAttrNode const &node);
    void put_plain_value(cObj const &value);
    cLineCollector &collected();
    void begin_entry(bool apart = false);
    void end_entry(cAttrNode const &node);
    void exact_entry(cAttrNode const &node);
    bool try_entry(cAttrNode const &node, objref const &place);
    bool make_key(cObj const &key, cMade &made);
    bool make_value(objref const &value, cMade &made);
    bool enter_value(cObj const &value, cMade &made);
    bool make_reference(cObj const &value, std::string const &path, cMade &made);
    bool catch_text(cObj const &obj, cMade &made);
    void put_parts(cAttrNode const &node, cMade const &key, cMade const &value);
    void refuse(objref const &place);
    objref place_of(objref const &key) const;
    cPathStep step_to(objref const &key);
    cLineCollector::cComment comment_of(cObj const &obj) const;
    bool can_write(objref const &ref);
    bool can_write_key(objref const &key);
    bool is_flat_token(objref const &ref) const;
    // In exact text only the keys of a member table are hidden.
    bool hides(cObj const &key) const { return (!tables_ || members_) && is_hidden(key); }
    // Whether only the node owns it. Then it isn't a constant.
    bool is_lone(objref const &ref) const { return ref->refs() == 1 && owns_; }

    cAttrHash const &hash_;
    cComposer *out_;
    cObj const *holder_;
    bool lines_;
    bool listed_;
    bool set_;
    bool members_ = holder_ && holder_->ommap_ptr() == &hash_;
    bool owns_ = &hash_ != core.const_hash; // the node owns, beside the map of constants
    cTextState &state_ = text_state();
    cExactTables *tables_ = exact_text() ? cExactRun::tables() : nullptr;
    cOpenContainer open_;
    cLineCollector *collector_ = nullptr; // if set, the layout isn't known yet
    size_t container_ = 0;                // its number in the collector
    int count_ = 0;                       // entries written
    bool whole_ = true;
};

void cEntryWriter::run() {
    if (lines_) out_->end_line();
    entries();
    if (lines_) out_->put_blanks(state_.indent());
}

void cEntryWriter::run_collected(cLineCollector &collector, cComposer &into) {
    collector_ = &collector;
    out_ = &into; // of the collector's stream
    container_ = collected().open(holder_ ? comment_of(*holder_) : cLineCollector::cComment());
    entries();
    if (collected().close(container_, state_.indent()) && holder_) tables_->relaid.insert(holder_);
}

// The collector, after all previous text was passed to it.
cLineCollector &cEntryWriter::collected() {
    out_->hand_over();
    return *collector_;
}

void cEntryWriter::entries() {
    cWriteLevel const level;
    for (cAttrNode *node = hash_.first(); node;) {
        cHoldNode const hold(node), hold_ahead(hash_.next(node));
        if (is_composed(*node))
            composed_entry(*node);
        else if (tables_)
            exact_entry(*node);
        else
            plain_entry(*node);
        node = node->is_dead() ? hold_ahead.living() : hash_.next(node);
    }
}

// Whether the entry can be composed at once: neither key nor value is a constant, rejected, or
// entered as written, and no user code can query the path.
bool cEntryWriter::is_composed(cAttrNode const &node) {
    if (!out_->composing() || !owns_ || !is_token(node.value())) return false;
    if (!listed_ || !cAttrInsert::is_lazy_number(node)) {
        bool const keyed = !listed_;
        objref const &key = node.key();
        if (keyed && !(is_token(*key) && is_lone(key))) return false;
        if (hides(*key) || (tables_ && keyed && !exact_key(key, true))) return false;
    }
    // A comment that exact text can't write is reported with the entry's path.
    if (tables_ && (node.value().has_ommap() || !has_token(node.value()))) return false;
    open_.begin_entry(node);
    return !open_.is_entered_by_caller(node.value());
}

void cEntryWriter::composed_entry(cAttrNode const &node) {
    begin_entry();
    if (!listed_) {
        write_token(*node.key(), *out_);
        out_->put("= ");
    }
    write_token(node.value(), *out_);
    open_.end_value();
    end_entry(node);
}

void cEntryWriter::plain_entry(cAttrNode const &node) {
    if (!appears_in_plain(node)) return;
    open_.begin_entry(node);
    begin_entry();
    if (!listed_) {
        write_object(*node.key(), *out_, is_lone(node.key()));
        out_->put("= ");
    }
    plain_value(node);
    end_entry(node);
}

cPathStep cEntryWriter::step_to(objref const &key) {
    if (out_->composing() && is_own_form(*key)) return cPathStep(key, cPathStep::on_demand);
    cUserCode const user(*out_);
    return cPathStep(key);
}

void cEntryWriter::plain_value(cAttrNode const &node) {
    cPathStep const step = step_to(node.key());
    if (cat::is_on(cat::io_channel)) {
        cUserCode const user(*out_);
        *cat::io_channel << state_.path() << std::endl;
    }
    try {
        put_plain_value(node.value());
    } catch (cErr const &error) {
        cUserCode const user(*out_);
        report_error(error);
    }
    open_.end_value();
}

void cEntryWriter::put_plain_value(cObj const &value) {
    std::string path;
    if (!open_.is_entered_by_caller(value)) {
        write_object(value, *out_, owns_);
    } else if (state_.written_path(&value, path)) {
        out_->put("#cRef(");
        out_->put(path);
        out_->put(')');
    } else {
        state_.enter_written(&value);
        write_object(value, *out_);
    }
}

void cEntryWriter::begin_entry(bool apart) {
    if (collector_)
        collected().entry(container_, state_.indent(), apart);
    else if (lines_)
        out_->put_blanks(state_.indent());
    ++count_;
}

void cEntryWriter::end_entry(cAttrNode const &node) {
    out_->put(listed_ ? ',' : ';');
    cObj const &value = node.value(); // another one, if user code replaced it
    if (collector_)
        return collected().after(container_, many_lines(value, *out_), comment_of(value));
    if (!lines_) {
        out_->put(' ');
        return;
    }
    if (many_lines(value, *out_))
        out_->put(' ');
    else if (value.has_ommap())
        put_comment(*out_, value);
    out_->end_line();
}

// --- exact text ---

// The key of an entry as the reader counts it: the reader does not see omitted entries.
objref cEntryWriter::place_of(objref const &key) const {
    return !listed_ || cat::as_index(key) == count_ ? key : own_key(count_);
}

cLineCollector::cComment cEntryWriter::comment_of(cObj const &obj) const {
    cLineCollector::cComment comment;
    std::string made;
    if (std::string const *const text = find_comment(obj, *out_, made)) comment.text = *text;
    if (!exact_comment(comment.text)) comment.path = state_.shown_path(true);
    return comment;
}

void cEntryWriter::refuse(objref const &place) {
    cUserCode const user(*out_);
    if (holder_ && exact_needs(*holder_, place)) whole_ = false;
    std::string path = state_.shown_path(true);
    try {
        cTextForm const plain(false);
        cPathStep const step(place);
        path = state_.shown_path(true);
    } catch (cErr const &) {
        // The key has no text, which was already reported; the path of its container is used.
    }
    try_report_unwritable(path);
}

// Whether checking that the object can be written runs user code.
bool is_asked(cObj const &obj) { return !is_own_form(obj) || &obj.type().type() == core.attlist; }

bool cEntryWriter::can_write(objref const &ref) {
    bool const lone = is_lone(ref);
    if (!is_asked(*ref) || (!lone && cat::find_const(ref))) return exact_writable(*ref, lone);
    cUserCode const user(*out_);
    return exact_writable(*ref);
}

bool cEntryWriter::can_write_key(objref const &key) {
    return key && key->type().is_keytype() && can_write(key) && !hides(*key);
}

void cEntryWriter::exact_entry(cAttrNode const &node) {
    open_.begin_entry(node);
    objref const &key = node.key();
    objref const place = place_of(key);
    cObj const &value = node.value();
    bool done = false;
    // No container takes bad or badfind when it is read.
    if ((listed_ || can_write_key(key)) && !value.is_bad() && can_write(node.valref())) {
        try {
            done = try_entry(node, place);
        } catch (cErr const &error) {
            cUserCode const user(*out_);
            report_error(error);
        }
    }
    if (!done) refuse(place);
}

// All steps that may fail come before any output. An entry that was removed meanwhile is not a
// failure.
bool cEntryWriter::try_entry(cAttrNode const &node, objref const &place) {
    cPathStep const step = step_to(place); // RUNS USER CODE, as the two below
    objref const &node_key = node.key();
    cBlindKey const blind(*tables_, !listed_ && !exact_path_key(node_key));
    cMade key, value;
    bool const made = (listed_ || make_key(*node_key, key)) &&
                      (node.is_dead() || make_value(node.valref(), value));
    if (made && !node.is_dead()) put_parts(node, key, value);
    return made || node.is_dead();
}

bool cEntryWriter::make_key(cObj const &key, cMade &made) {
    if (is_own_form(key)) return true;
    cUserCode const user(*out_);
    return catch_text(key, made);
}

bool cEntryWriter::make_value(objref const &value, cMade &made) {
    if (!is_lone(value) && cat::find_const(value)) return true; // by name, each time
    if (is_own_form(*value))
        return !open_.is_entered_by_caller(*value) || enter_value(*value, made);
    cUserCode const user(*out_);
    size_t const before = tables_->entered.size();
    if (!enter_value(*value, made)) return false;
    if (made || catch_text(*value, made)) return true;
    tables_->forget_after(before);
    return false;
}

// Or creates a reference, if it was written before.
bool cEntryWriter::enter_value(cObj const &value, cMade &made) {
    if (tables_->open.has(&value)) return false; // an unclosed container can't be referred to
    std::string path;
    if (state_.written_path(&value, path) && !tables_->forgotten.has(&value))
        return make_reference(value, path, made);
    state_.enter_written(&value);
    tables_->enter(&value);
    return true;
}

bool cEntryWriter::make_reference(cObj const &value, std::string const &path, cMade &made) {
    if (tables_->unreachable.has(&value)) return false;
    made = "#cRef(" + path + ')';
    return true;
}

// The written form as a string; false if it can't be created, with the error printed.
bool cEntryWriter::catch_text(cObj const &obj, cMade &made) {
    std::ostream &os = out_->stream();
    cTextStream caught(made.emplace());
    caught.copyfmt(os);
    bool done = false;
    try {
        cOpen const open(*tables_, obj);
        cComposer out(caught);
        done = write_form(obj, out); // RUNS USER CODE
    } catch (cErr const &error) {
        report_error(error);
    }
    if (caught.fail()) os.setstate(std::ios_base::failbit);
    return done && !caught.fail();
}

void cEntryWriter::put_parts(cAttrNode const &node, cMade const &key, cMade const &value) {
    cObj const &obj = node.value();
    bool const angle = value ? value->substr(0, 1) == "<" : is_bare_set(obj);
    begin_entry(set_ && angle && count_ == 0);
    if (!listed_) {
        if (key)
            out_->put(*key);
        else
            write_form(*node.key(), *out_, is_lone(node.key()));
        out_->put("= ");
    }
    if (value)
        out_->put(*value);
    else
        write_form(obj, *out_, is_lone(node.valref())); // RUNS USER CODE, in containers below
    open_.end_value();
    end_entry(node);
}

// --- one-line containers in exact text ---

bool cEntryWriter::is_flat_token(objref const &ref) const {
    if (!ref || !is_lone(ref) || ref->has_ommap() || !is_token(*ref) || !has_token(*ref))
        return false;
    std::string const *const text = value_of<std::string>(*ref);
    return !text || text->find('\n') == std::string::npos;
}

bool cEntryWriter::is_flat() const {
    if (!out_->composing() || open_.enters_all()) return false;
    if (holder_ && holder_->has_ommap() && !cObj::is_void(holder_->omember("//"))) return false;
    for (cAttrNode const *node = hash_.first(); node; node = hash_.next(node)) {
        if (!is_flat_token(node->valref())) return false;
        if (listed_) continue;
        objref const &key = node->key();
        if (!is_flat_token(key) || hides(*key) || !exact_key(key, true)) return false;
    }
    return true;
}

} // namespace

void put_comment(cComposer &out, cObj const &obj) {
    std::string made;
    std::string const *const text = find_comment(obj, out, made);
    if (!text) return;
    if (!exact_text() || exact_comment(*text)) return out.put(*text);
    cUserCode const user(out);
    try_report_unwritable(text_state().shown_path(true));
}

void report_error(cErr const &error) {
    cat::put_error_line("cErr during write of container, path='" + text_state().path() + "':\n" +
                        error.as_string());
}

void try_report_unwritable(std::string const &path) {
    try {
        report_unwritable(path); // RUNS USER CODE
    } catch (cErr const &error) {
        report_error(error);
    }
}

bool write_entries(cAttrHash const &hash, cComposer &out, char format, cTypeObj const *type,
                   cObj const *holder, bool lone) {
    bool const lines = format != 's';
    std::optional<cExactRun> run;
    if (exact_text()) run.emplace();
    cEntryWriter writer(hash, out, lines, type, holder, lone);
    if (!run || lines || !type || writer.is_flat()) {
        writer.run();
        return writer.is_whole();
    }
    cExactTables &tables = *cExactRun::tables();
    if (tables.collector && &tables.collector->stream() == &out.stream()) {
        writer.run_collected(*tables.collector, out);
    } else {
        out.hand_over();
        cLineCollector collector(out.stream());
        cCollecting const collecting(tables, collector);
        cComposer into(collector.stream());
        into.begin();
        writer.run_collected(collector, into);
        if (out.composing()) out.look_again();
        collector.deliver(out);
    }
    return true; // an attribute set has no brackets to collect
}

bool cAttrHash::write_hash(std::ostream &os, char const *format, cTypeObj *type) const {
    cComposer out(os);
    out.begin();
    write_entries(*this, out, format ? *format : '\0', type, nullptr);
    return true;
}
