#include "tools/qrv/rules/mistakes.h"

#include "tools/qrv/output/lines.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>

namespace {

using cat::ErrorKind;

cPlace end_of(cat::ReadError const &error) { return {error.end_line, error.end_column}; }

// Stores for each error, by index, the error from which it follows, and groups the errors into
// mistakes. The numbers refer to the list in mistakes.h.
class cGroups {
  public:
    cGroups(std::string const &bytes, std::vector<cUnread> const &unread,
            std::vector<cat::ReadError> const &errors)
        : bytes_(bytes), lines_(bytes), unread_(unread.size()) {
        for (cUnread const &one : unread) {
            all_.push_back(one.error);
            to_the_end_.push_back(one.to_the_end);
        }
        all_.insert(all_.end(), errors.begin(), errors.end());
        for (size_t i = 0; i < all_.size(); ++i) cause_.push_back(i);
        for (size_t i = unread_; i < all_.size(); ++i)
            if (all_[i].follows != cat::ReadError::none) cause_[i] = unread_ + all_[i].follows;
    }

    std::vector<cMistake> mistakes() {
        for (size_t i = unread_; i < all_.size(); ++i)
            if (is_unclosed(all_[i]) || all_[i].kind == ErrorKind::read_too_deep)
                unclosed_.push_back(i);
        std::stable_sort(unclosed_.begin(), unclosed_.end(),
                         [&](size_t a, size_t b) { return place_of(all_[a]) < place_of(all_[b]); });
        join_out_of_step();
        join_unclosed();
        join_after_early_end();
        join_swallowed();
        join_broken_rules();
        join_unread();
        std::vector<cMistake> found;
        std::map<size_t, size_t> index;
        for (size_t i = 0; i < all_.size(); ++i)
            if (first(i) == i) {
                index[i] = found.size();
                found.push_back({all_[i], {}});
            }
        for (size_t i = 0; i < all_.size(); ++i)
            if (first(i) != i) found[index[first(i)]].following.push_back(all_[i]);
        return found;
    }

  private:
    size_t first(size_t i) {
        while (cause_[i] != i) i = cause_[i] = cause_[cause_[i]];
        return i;
    }

    // Records that `cause` has caused the run of `error`, so that only `cause` is shown.
    void join(size_t error, size_t cause) {
        size_t const run = first(error);
        if (run == first(cause) && first(cause) == cause) return;
        cause_[first(cause)] = cause;
        cause_[cause] = cause;
        cause_[run] = cause;
    }

    // 2: joins the errors at an unread byte to the error about that byte.
    void join_unread() {
        std::multimap<cPlace, size_t> ends;
        for (size_t i = unread_; i < all_.size(); ++i)
            ends.emplace(std::max(place_of(all_[i]), end_of(all_[i])), i);
        for (size_t u = 0; u < unread_; ++u) {
            cPlace const place = place_of(all_[u]);
            auto const last = to_the_end_[u] ? ends.end() : ends.upper_bound(place);
            for (auto i = ends.lower_bound(place); i != last; ++i) join(i->second, u);
        }
    }

    bool is_after_equals(cPlace place) const {
        size_t const at = bytes_.find_last_not_of(" \t\r\n", lines_.offset(place) - 1);
        return at != bytes_.npos && bytes_[at] == '=';
    }

    // 4: joins an error about a key that is written as a value to the error before it.
    void join_out_of_step() {
        for (size_t i = unread_ + 1; i < all_.size(); ++i) {
            bool const about_key = all_[i].kind == ErrorKind::read_key_type ||
                                   all_[i].kind == ErrorKind::read_key_unknown;
            if (about_key && place_of(all_[i - 1]) < place_of(all_[i]) &&
                is_after_equals(place_of(all_[i])))
                cause_[first(i)] = first(i - 1);
        }
    }

    // 3: joins nested unclosed brackets to the innermost one.
    void join_unclosed() {
        for (size_t const outer : unclosed_) {
            if (!is_unclosed(all_[outer])) continue;
            auto const after =
                std::upper_bound(unclosed_.begin(), unclosed_.end(), end_of(all_[outer]),
                                 [&](cPlace place, size_t i) { return place < place_of(all_[i]); });
            size_t const innermost = *std::prev(after);
            if (innermost != outer)
                join(outer, is_open_reference(first(innermost)) ? first(innermost) : innermost);
        }
    }

    // Is this an error about a reference without a ), which has read the rest of the text?
    bool is_open_reference(size_t i) const {
        return all_[i].kind == ErrorKind::read_ref &&
               bytes_.find(')', lines_.offset(place_of(all_[i]))) == bytes_.npos;
    }

    // 7: joins later errors about keys to the first bracket whose map was ended by a byte that is
    // not a bracket. The map around it reads the remaining entries and confuses keys and values.
    void join_after_early_end() {
        auto const ends_before = [&](size_t a, size_t b) {
            return end_of(all_[a]) < end_of(all_[b]);
        };
        std::vector<size_t> early;
        for (size_t const bracket : unclosed_)
            if (ends_early(bracket)) early.push_back(bracket);
        if (early.empty()) return;
        size_t const bracket = *std::min_element(early.begin(), early.end(), ends_before);
        for (size_t i = unread_; i < all_.size(); ++i) {
            bool const is_out_of_step =
                all_[i].kind == ErrorKind::read_equals || all_[i].kind == ErrorKind::read_no_key;
            if (is_out_of_step && first(i) == i && end_of(all_[bracket]) < place_of(all_[i]))
                cause_[i] = first(bracket);
        }
    }

    bool ends_early(size_t bracket) const {
        if (!is_unclosed(all_[bracket])) return false;
        size_t const end = lines_.offset(end_of(all_[bracket]));
        return end < bytes_.size() && std::string_view("}])").find(bytes_[end]) == bytes_.npos;
    }

    // 5: joins the errors about entries that an unclosed bracket swallowed to that bracket.
    void join_swallowed() {
        std::vector<size_t> order; // by position
        for (size_t i = unread_; i < all_.size(); ++i) order.push_back(i);
        std::stable_sort(order.begin(), order.end(),
                         [&](size_t a, size_t b) { return place_of(all_[a]) < place_of(all_[b]); });
        for (size_t const bracket : unclosed_) {
            if (first(bracket) != bracket) continue;
            bool const is_row = all_[bracket].kind == ErrorKind::read_unclosed_vector ||
                                all_[bracket].kind == ErrorKind::read_unclosed_set;
            bool const is_typed = all_[bracket].kind == ErrorKind::read_unclosed_type;
            auto i =
                std::lower_bound(order.begin(), order.end(), place_of(all_[bracket]),
                                 [&](size_t e, cPlace place) { return place_of(all_[e]) < place; });
            for (; i != order.end() && place_of(all_[*i]) <= end_of(all_[bracket]); ++i)
                if ((is_row && (all_[*i].kind == ErrorKind::read_equals || is_key(*i, bracket))) ||
                    (is_typed && all_[*i].kind == ErrorKind::other))
                    join(*i, bracket);
        }
    }

    // Is the error about this bracket, in place of a key?
    bool is_key(size_t error, size_t bracket) const {
        return all_[error].kind == ErrorKind::read_key_type &&
               place_of(all_[error]) == place_of(all_[bracket]);
    }

    // 6: errors inside a value come before errors about the whole value, whose position is that of
    // its type.
    void join_broken_rules() {
        using enum ErrorKind;
        constexpr ErrorKind kinds[] = {read_no_delimiter, read_equals, read_no_key,
                                       read_no_value,     read_token,  read_unclosed_map,
                                       read_unclosed_type};
        for (size_t i = unread_; i < all_.size(); ++i) {
            if (all_[i].kind != other || first(i) != i || !is_before_bracket(place_of(all_[i])))
                continue;
            for (size_t j = i; j-- > unread_ && place_of(all_[i]) <= place_of(all_[j]);)
                if (std::find(std::begin(kinds), std::end(kinds), all_[j].kind) != std::end(kinds))
                    cause_[i] = first(j);
        }
    }

    bool is_before_bracket(cPlace type) const {
        size_t const end = bytes_.find_first_of("({[<=;,", lines_.offset(type));
        return end != bytes_.npos && bytes_[end] == '(';
    }

    std::string const &bytes_;
    cLines const lines_;
    std::vector<cat::ReadError> all_;
    size_t const unread_;          // the number of unread positions; their errors come first
    std::vector<bool> to_the_end_; // for each of these: cUnread::to_the_end
    std::vector<size_t> cause_;
    std::vector<size_t> unclosed_; // by position; includes brackets that are too deep
};

} // namespace

void add_following(cMistake &to, cMistake const &from) {
    to.following.push_back(from.error);
    to.following.insert(to.following.end(), from.following.begin(), from.following.end());
}

std::vector<cMistake> mistakes_of(std::string const &bytes, std::vector<cUnread> const &unread,
                                  std::vector<cat::ReadError> const &errors) {
    return cGroups(bytes, unread, errors).mistakes();
}
