// cObj::setattrp: writing by a path, one value or the statements of a string.
//
//   statement = { ";" | "," } path operator value        path = [ "/" ] key { "/" key }
//   operator    walks to             calls there                 creates missing levels
//   = or none   the last but one     copyitem(last key, value)   with force
//   &=          the last but one     setattr(last key, value)    with force
//   +=          the last             add(value)                  with force, for a map
//   <<          the last             append(value)               never
//
// Each statement is parsed, its value is read, and it is applied. After a syntax error the rest of
// the text is ignored, since the start of the next statement is unknown. Errors of parsing and
// walking are the scanner's; those of the operation are raised as usual.
//
// The text is one reading from its first to its last statement: it has one budget for the merges
// inside its values, it loads no module that the filter does not allow, and an existing report
// receives all errors. Applying is an action of the program and not limited by that budget. But
// text that is read inside another reading can name the back references of that reading. Then the
// budget of that reading limits applying too, and rejects a value that contains its own
// destination.

#include "containers/cmergebudget.h"
#include "qrv/core/ctypes.h"
#include "text/path/cpath_scan.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_session.h"
#include "text/state/ctext_state.h"

#include <locale>
#include <ostream>
#include <vector>

namespace {

bool is_operator(int t) {
    return t == '=' || t == tkAddAssign || t == tkShiftLeft || t == tkAndAssign;
}

class cPathStatement {
  public:
    explicit cPathStatement(std::string const &text)
        : path_(text, cat::ReadReport::current() == nullptr) {}
    cPathStatement(cPathStatement const &) = delete;
    cPathStatement &operator=(cPathStatement const &) = delete;
    ~cPathStatement() = default;

    // Parses the next statement up to its operator. False, after a report, on a syntax error; at
    // the end of the text the statement is empty.
    bool parse(bool need_operator);
    bool empty() const noexcept { return keys_.empty(); }
    // Requires a non-empty statement. RUNS USER CODE. With `from_text`, rejects the value if the
    // enclosing reading would reject a merge of it.
    bool apply(objref const &root, objref const &value, bool force, bool from_text);
    cAttrScan &scan() noexcept { return path_.scan(); }

  private:
    struct cKey {
        objref key;
        unsigned line; // its position, for reports
        unsigned column;
    };

    bool refuse(cErrText const &error, std::string const &what, cAttrLiteral const &about);
    bool refuse_walk(cErrText const &error, size_t stopped_at, std::string const &what = {});
    bool walk(objref &at, objref const &value, bool force);

    cPathScan path_;
    std::vector<cKey> keys_;
    cAttrLiteral operator_;
};

bool cPathStatement::refuse(cErrText const &error, std::string const &what,
                            cAttrLiteral const &about) {
    begin_error(scan(), error) << cNamed::name(what);
    if (about.code != tkEof) scan().about(about);
    scan().fire();
    return false;
}

bool cPathStatement::parse(bool need_operator) {
    keys_.clear();
    operator_ = {};
    for (path_.begin_statement(); !path_.at_end() || !keys_.empty(); path_.next()) {
        cAttrLiteral const &token = path_.token();
        cAttrLiteral const &follower = path_.follower();
        if (token.code == '/' && !keys_.empty()) return refuse(err_path_slash, "/", token);
        objref const key = path_.key();
        if (!key) return refuse(err_path_no_key, token.text, token);
        keys_.push_back({key, token.outer_line, token.outer_column});
        if (follower.code == tkEof)
            return !need_operator || refuse(err_path_no_operator, {}, token);
        if (is_operator(follower.code)) {
            operator_ = follower;
            return true;
        }
        if (follower.code != '/') return refuse(err_path_no_separator, follower.text, follower);
    }
    return true;
}

bool cPathStatement::refuse_walk(cErrText const &error, size_t stopped_at,
                                 std::string const &what) {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    for (size_t i = 0; i <= stopped_at; ++i) {
        os << '/';
        keys_[i].key->writeobj(os); // RUNS USER CODE
    }
    std::string const path = shown_path(os.str(), cat::ReadReport::current() != nullptr);
    std::string const &named = what.empty() ? what : operator_.text;
    begin_error(scan(), error) << what << cNamed::key(path) << cNamed::name(named).unsaid();
    scan().about(keys_[stopped_at].line, keys_[stopped_at].column);
    scan().fire();
    return false;
}

// Walks from the root to the object that the operation changes.
bool cPathStatement::walk(objref &at, objref const &value, bool force) {
    bool const adds = operator_.code == tkAddAssign;
    bool const whole = adds || operator_.code == tkShiftLeft;
    bool const may_create = !whole || (adds && cObj::is_map(value));
    size_t const steps = whole ? keys_.size() : keys_.size() - 1;
    for (size_t i = 0; i < steps; ++i) {
        at = may_create ? at->getattr_force(keys_[i].key, force) : at->getattr(keys_[i].key);
        if (cObj::is_good(at)) continue;
        if (may_create) return refuse_walk(err_path_absent, i);
        return refuse_walk(err_path_operator, i,
                           operator_.text + "' is not allowed in case of not existing path: ");
    }
    return true;
}

bool cPathStatement::apply(objref const &root, objref const &value, bool force, bool from_text) {
    objref at = root;
    if (!walk(at, value, force)) return false;
    objref const key = keys_.back().key;
    if (from_text && !cat::merge_allows(*at, key, value))
        return cat::merge_exhausted() && refuse_walk(err_read_too_much, keys_.size() - 1);
    switch (operator_.code) {
    case tkAndAssign:
        return at->setattr(key, value);
    case tkAddAssign:
        return at->add(value);
    case tkShiftLeft:
        return at->append(value);
    default:
        return at->copyitem(key, value, false);
    }
}

} // namespace

bool cObj::setattrp(std::string const &path, objref const &value, bool force) {
    objref const self = objref::share(this);
    objref const held = value;
    cPathStatement statement(path);
    return statement.parse(false) && !statement.empty() &&
           statement.apply(self, held, force, false);
}

bool cObj::setattrp(std::string const &text, bool force) {
    objref const self = objref::share(this);
    bool const outermost = !cat::is_reading();
    cPathStatement statement(text);
    cReading const reading(statement.scan());
    cReadSession &session = *cReadSession::current();
    bool result = true;
    while (statement.parse(true)) {
        if (statement.empty()) return result;
        objref value = cat::bad();
        session.refresh_limit();
        int const scanned = statement.scan().scan_obj(value, nullptr);
        if (scanned == -1) return result;
        cAboutValue const about_value(session);
        cat::cMergeBudgetUse const budget(outermost ? nullptr : cat::cMergeBudget::current());
        result = scanned == 0 && statement.apply(self, value, force, true) && result;
    }
    return false;
}
