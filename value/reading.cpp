#include "value/reading.h"

#include "qrv/containers/ctypeobj_update.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/file/creadtext.h"

#include <algorithm>
#include <utility>

namespace qrv::detail {

namespace {

// The library's filter is a plain function, so allows() calls the filter of the innermost reading.
options const *innermost = nullptr;

bool allows(std::string const &module) { return innermost->modules(module); }

class asked {
  public:
    explicit asked(options const &how) : before_(std::exchange(innermost, &how)) {}
    asked(asked const &) = delete;
    asked &operator=(asked const &) = delete;
    ~asked() { innermost = before_; }

  private:
    options const *const before_;
};

cat::ReadOptions options_of(options const &how, std::string const &file) {
    return {how.comments, how.depth, how.modules ? allows : nullptr, file};
}

// If a container is too deep, the containers around it can't be read either: their errors follow
// from that of the first one.
void mark_around_deep(std::vector<cat::ReadError> &errors) {
    constexpr std::size_t none = cat::ReadError::none;
    std::size_t deep = none;
    for (std::size_t i = 0; i < errors.size(); ++i) {
        cat::ReadError &error = errors[i];
        if (error.kind == cat::ErrorKind::read_too_deep && deep == none) deep = i;
        if (error.follows != none)
            error.follows = std::min(error.follows, errors[error.follows].follows);
        else if (deep < i && error.kind == cat::ErrorKind::read_container)
            error.follows = deep;
    }
}

// Calls `read`, which fills an object and a report, and returns the object as a value.
template <class Read>
value result_of(options const &how, std::vector<cat::ReadError> &errors, Read const &read) {
    asked const filter(how);
    cat::ReadReport report;
    objref object;
    read(object, report); // RUNS USER CODE
    errors = report.entries();
    mark_around_deep(errors);
    return cObj::is_good(object) ? value(std::move(object)) : value();
}

} // namespace

value read_value(std::string_view text, std::string const &file, options const &how,
                 std::vector<cat::ReadError> &errors) {
    return result_of(how, errors, [&](objref &object, cat::ReadReport &report) {
        cat::read_text(text, object, report, options_of(how, file));
    });
}

namespace {

// A type that text declared in a scope, which has ended since.
struct Declared {
    typeref type;
    std::string name; // in the scope; a former name of the type is restored at its end
};

// The registered type that reading without that scope would change; else null. RUNS USER CODE
cTypeObj *changed_by(Declared const &declared) {
    cTypeObj &found = cat::find_type(declared.name);
    if (&found == &cat::type_nil()) return nullptr;
    cat::TypeScope const *const scope = cat::TypeScope::current();
    bool const hides =
        scope && std::ranges::find(scope->types(), &found, &typeref::get) == scope->types().end();
    return hides ? nullptr : &found;
}

// Stand-ins for the registered types of another metatype that the text would change: like these,
// they refuse the change.
std::vector<typeref> refusing(std::vector<Declared> const &types) {
    std::vector<typeref> result;
    for (Declared const &declared : types) {
        cTypeObj *const other = changed_by(declared);
        if (!other || &other->type() == &declared.type->type()) continue;
        auto *const type = new cTypeObj(&other->type(), declared.name.c_str(), nullptr);
        result.push_back(typeref::adopt(type));
    }
    return result;
}

// Can the same types be declared outside of the scope?
bool can_be_declared(Declared const &declared) {
    return declared.type->name() == declared.name && !changed_by(declared);
}

} // namespace

// Reads in a scope, whose end removes the types of faulty text. Text that changes registered types
// is read again without the scope. If such a change is an error, the second reading has a scope
// with stand-ins instead, which refuse the change.
value read_all_or_no_types(std::string_view text, std::string const &file, options const &how,
                           std::vector<cat::ReadError> &errors) {
    value result;
    std::vector<Declared> types;
    {
        cat::TypeScope const scope;
        result = read_value(text, file, how, errors);
        if (!errors.empty()) return result;
        for (typeref const &type : scope.types()) types.push_back({type, type->name()});
    }
    if (std::vector<typeref> const others = refusing(types); !others.empty()) {
        cat::TypeScope scope;
        for (typeref const &type : others) scope.declare(*type, "");
        return read_value(text, file, how, errors);
    }
    if (!std::ranges::all_of(types, can_be_declared)) return read_value(text, file, how, errors);
    for (Declared const &declared : types) cat::declare_type(*declared.type, "");
    return result;
}

namespace {

// "file:line:column: note: text", for the position of an error.
std::string note(cat::ReadError position, std::string const &text) {
    constexpr std::string_view label = "error: ";
    position.text = "";
    std::string line = cat::format(position);
    line.resize(line.size() - label.size());
    return '\n' + line + "note: " + text;
}

} // namespace

// Errors that follow from another one are only counted in the message.
void throw_errors(std::vector<cat::ReadError> const &errors) {
    if (errors.empty()) return;
    std::string list;
    for (std::size_t i = 0; i < errors.size(); ++i) {
        cat::ReadError const &error = errors[i];
        if (error.follows != cat::ReadError::none) continue;
        if (!list.empty()) list += '\n';
        list += cat::format(error);
        if (error.kind == cat::ErrorKind::read_too_deep)
            list += note(error, "qrv::options::depth sets this limit");
        auto const following = std::ranges::count(errors, i, &cat::ReadError::follows);
        if (following > 0)
            list += note(error, std::to_string(following) + (following == 1
                                                                 ? " more error follows from it"
                                                                 : " more errors follow from it"));
    }
    throw parse_error(list, errors);
}

} // namespace qrv::detail
