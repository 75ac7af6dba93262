#include "tools/qrv/verify/mismatch.h"

#include "qrv/containers/citerobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cintformat.h"
#include "tools/qrv/output/messages.h"
#include "tools/qrv/verify/attempt.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <set>
#include <sstream>
#include <utility>

namespace {

template <class T> std::optional<double> value_as(objref const &value, cTypeObj const &type) {
    if (&value->type() != &type) return std::nullopt;
    return static_cast<double>(static_cast<cObjDR<T> const &>(*value).val());
}

// The double with the same shortest digits as the float, for comparison with a given double.
double by_digits(float number) {
    char text[64];
    auto const written = std::to_chars(text, text + sizeof text, number);
    double value = 0;
    std::from_chars(text, written.ptr, value);
    return value;
}

bool same_number(objref const &stored, objref const &given) {
    double const a = *number_of(stored), b = *number_of(given);
    if (a == b) return true;
    return &stored->type() == &cat::type_float() && std::isfinite(a) &&
           by_digits(static_cast<float>(a)) == b;
}

bool is_formatted(objref const &value) {
    return dynamic_cast<cIntFormat const *>(value.get()) != nullptr;
}

// Can they be compared as numbers? Only an intf accepts an intf.
bool are_numbers(objref const &stored, objref const &given) {
    return number_of(stored) && number_of(given) && (is_formatted(stored) || !is_formatted(given));
}

// Does the stored number equal the number in the given text?
bool reads_as(objref const &stored, objref const &given) {
    auto const *const format = dynamic_cast<cIntFormat const *>(stored.get());
    if (!format || &given->type() != &cat::type_string()) return false;
    std::string const text = cat::as_string(given);
    int number = 0;
    return cIntFormat(number, format->format()).set_str(text.c_str()) &&
           number == format->value() && !misread(text);
}

// The whole text as a number; empty if it isn't one or is too large.
std::optional<std::int64_t> parsed(std::string const &text, int base) {
    char const *const first = text.data() + (text[0] == '+' ? 1 : 0);
    char const *const end = text.data() + text.size();
    std::int64_t number = 0;
    auto const result = std::from_chars(first, end, number, base);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return number;
}

// Does converting the stored value to the type of the given one result in the given value?
bool converts_back(objref const &stored, objref const &given) {
    objref const back = given->clone();
    bool same = false;
    cAttempt const ignored([&] {
        same = cObj::is_good(back) && back->assign(stored) && back->equal(given);
        return same;
    });
    return same;
}

class cComparison {
  public:
    std::vector<cMismatch> all(objref const &stored, objref const &given, cStored how) {
        compare(stored, given, how);
        return std::move(found_);
    }

  private:
    void compare(objref const &stored, objref const &given, cStored how) {
        if (stored == given || found_.size() >= most_mismatches) return;
        if (!cObj::is_good(stored)) return add("nothing is stored there", cMismatch::value);
        if (are_numbers(stored, given)) return compare_numbers(stored, given);
        bool const appended =
            how == cStored::merged && (cObj::is_vector(stored) || cObj::is_set(stored));
        if (appended) return;
        if (&stored->type() != &given->type()) return compare_types(stored, given);
        if (!compared_.emplace(stored.get(), given.get()).second) return;
        if (cObj::is_map(stored) || cObj::is_vector(stored))
            return compare_parts(stored, given, how);
        if (!same_value(stored, given))
            add("it holds " + shown(stored) + " and not " + shown(given), cMismatch::value);
    }

    void add(std::string const &text, cMismatch::cKind kind) {
        found_.push_back({path_, text, kind});
    }

    void compare_numbers(objref const &stored, objref const &given) {
        if (same_number(stored, given)) return;
        if (is_constant(*stored)) return add_constant(stored);
        add(shown(given) + " would be stored as " + shown(stored), cMismatch::number);
    }

    void compare_types(objref const &stored, objref const &given) {
        if (is_constant(*stored)) return add_constant(stored);
        if (!stored->is_container() && (converts_back(stored, given) || reads_as(stored, given)))
            return;
        if (is_formatted(stored) && &given->type() == &cat::type_string())
            if (std::optional<int> const number = misread(cat::as_string(given)))
                return add("intf reads " + shown(given) + " as " + std::to_string(*number),
                           cMismatch::type);
        add("it is " + kind_of(stored) + " and cannot store " + kind_of(given) + " as it is",
            cObj::is_nil(given) || stored->is_type() ? cMismatch::value : cMismatch::type);
    }

    void add_constant(objref const &stored) {
        add("it holds " + shown(stored) + ", which cannot be assigned", cMismatch::value);
    }

    void compare_parts(objref const &stored, objref const &given, cStored how) {
        size_t given_count = 0, stored_count = 0;
        for (cIterObj it = given->begin(); it.valid(); ++it, ++given_count) {
            objref const key = it.key();
            size_t const size = path_.size();
            path_ += '/' + cat::as_text(key);
            compare(stored->getattr(key), it.valref(), how);
            path_.resize(size);
        }
        if (how == cStored::merged) return;
        for (cIterObj it = stored->begin(); it.valid() && stored_count <= given_count; ++it)
            ++stored_count;
        if (stored_count > given_count) add("it holds more than was given", cMismatch::value);
    }

    static constexpr size_t most_mismatches = 1000;
    std::string path_;
    std::vector<cMismatch> found_;
    std::set<std::pair<cObj const *, cObj const *>> compared_;
};

} // namespace

std::vector<cMismatch> mismatches(objref const &stored, objref const &given, cStored how) {
    return cComparison().all(stored, given, how);
}

bool same_value(objref const &a, objref const &b) {
    cat::ExactText const exact;
    return a->equal(b) || (&a->type() == &b->type() && cat::as_text(a) == cat::as_text(b));
}

bool is_constant(cObj const &value) {
    std::ostringstream ignored;
    return value.write_constname(ignored);
}

std::optional<double> number_of(objref const &value) {
    if (cObj::is_bad(value)) return std::nullopt;
    if (auto const number = value_as<bool>(value, cat::type_bool())) return number;
    if (auto const number = value_as<int>(value, cat::type_int())) return number;
    if (auto const number = value_as<float>(value, cat::type_float())) return number;
    if (auto const *const format = dynamic_cast<cIntFormat const *>(value.get()))
        return format->value();
    return value_as<double>(value, cat::type_double());
}

std::optional<int> misread(std::string const &text) {
    std::string trimmed = text;
    cat::wsp_normalize(trimmed);
    int number = 0;
    cIntFormat read(number, cIntFormat::fmtDec);
    if (!read.set_str(text.c_str())) return std::nullopt;
    bool same = true;
    if (read.format() == cIntFormat::fmtDec) same = parsed(trimmed, 10) == number;
    if (read.format() == cIntFormat::fmtOct)
        same = parsed(trimmed, 8) == static_cast<std::uint32_t>(number);
    return same ? std::nullopt : std::optional(number);
}

bool accepts(objref const &target, double number) {
    objref const given = cat::of(number), trial = target->clone();
    return cObj::is_good(trial) && trial->assign(given) && same_number(trial, given);
}

std::string shown(objref const &value) {
    cat::ExactText const exact;
    std::string text;
    for (char c : cat::as_text(value))
        if (c != '\n')
            text += c;
        else if (text.empty() || text.back() != ' ')
            text += ' ';
    return shortened(text);
}

std::string kind_of(objref const &value) {
    return cObj::is_nil(value) ? "#nil" : with_article(value->type().name());
}

std::string with_article(std::string const &name) {
    if (name.empty()) return "an object of a type without a name";
    bool const vowel = std::string("aeiouAEIOU").find(name[0]) != std::string::npos;
    return (vowel ? "an " : "a ") + shortened(name);
}
