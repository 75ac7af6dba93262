#include "value/writing.h"

#include "qrv/diagnostics/ccaughterrors.h"
#include "qrv/text/state/cwriteindent.h"
#include "qrv/text/write/cexacttext.h"
#include "value/one_line.h"

#include <locale>
#include <sstream>
#include <utility>

namespace qrv::detail {

namespace {

// Sets the writer's columns while it exists.
class indent {
  public:
    explicit indent(std::optional<int> columns)
        : inner_(cat::write_indent), outer_(cat::write_indent0) {
        if (columns) cat::write_indent = cat::write_indent0 = *columns;
    }
    indent(indent const &) = delete;
    indent &operator=(indent const &) = delete;
    ~indent() {
        cat::write_indent = inner_;
        cat::write_indent0 = outer_;
    }

  private:
    int const inner_, outer_;
};

// The highest number of values that a message names.
constexpr std::size_t most_named = 10;

[[noreturn]] void throw_all(cat::CaughtErrors const &caught, std::string const &about) {
    std::string text;
    for (cErr const &entry : caught.entries()) {
        text += (text.empty() ? about : "\n" + about) + entry.as_string();
        if (&entry == &caught.entries()[most_named - 1]) break;
    }
    if (caught.count() > most_named)
        text += "\n" + about + "and " + std::to_string(caught.count() - most_named) + " more";
    throw error(text, caught.entries().front().code());
}

} // namespace

std::string written(value const &v, style const &how, std::string const &about) {
    cat::CaughtErrors const caught;
    std::optional<cat::ExactText> exact;
    if (how.exact) exact.emplace();
    indent const columns(how.indent);
    // For such a stream, the writer composes text without recording the positions of values.
    std::ostringstream os;
    os.imbue(std::locale::classic());
    v.object()->writeobj(os);         // RUNS USER CODE
    if (os.fail() && !caught.empty()) // without the path, which would be too long to read
        throw error(about + "nesting is too deep to be written", caught.entries()[0].code());
    if (!caught.empty()) throw_all(caught, about);
    std::string text = std::move(os).str();
    return how.one_line ? on_one_line(text) : text;
}

} // namespace qrv::detail
