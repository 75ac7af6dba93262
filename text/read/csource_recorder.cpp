#include "text/read/csource_recorder.h"

// Searching nodes runs no user code: nodes with keys of a program's types are found by identity.

#include "core/cscalar.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <istream>
#include <unordered_map>
#include <utility>

namespace {

unsigned lines_in(std::string_view text) {
    return static_cast<unsigned>(std::count(text.begin(), text.end(), '\n'));
}

cAttrHash *hash_of(cObj const &value) {
    auto *const map = dynamic_cast<cMapObj *>(const_cast<cObj *>(&value));
    return map ? &map->datamap() : nullptr;
}

bool is_in_form(cObj const &container, char form) { return *cat::wformat(container) == form; }

// Whether a value of the tree accepts a merge from another value. Numbers convert into each other.
bool accepts_merge(cObj const &value, cObj const &other) {
    if (hash_of(value) || hash_of(other)) return hash_of(value) && hash_of(other);
    if (cObj::is_void(&value) || cObj::is_void(&other)) return false;
    return &value.type() == &other.type() ||
           (&value.type() != &cat::type_string() && &other.type() != &cat::type_string());
}

bool has_position(std::istream const &is) {
    return is.rdbuf() && is.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in) != -1;
}

} // namespace

namespace cat {

constinit cSourceRecorder *cSourceRecorder::living_ = nullptr;
constinit cSourceRecorder *cSourceRecorder::reading_ = nullptr;
constinit std::size_t cSourceRecorder::longest = cSourceRecorder::absent - 1;

cSourceRecorder::~cSourceRecorder() { release(); }

void cSourceRecorder::release() noexcept {
    for (cRecord &record : records_)
        if (record.node) record.node->unhold();
    records_ = {};
}

// --- the reading ---

bool cSourceRecorder::start(cAttrScan const &outer) {
    if (!texts_.empty()) return false;
    reading_ = this;
    outer_ = &outer;
    texts_.push_back({&outer.is(), {}});
    uncounted_ = has_position(outer.is()) ? 0 : 1;
    text_begin_ = offset(outer.position(), outer.lineno());
    outer.watch_comments();
    return true;
}

void cSourceRecorder::finish() {
    unwind(0);
    complete_ = outer_->passed() <= longest;
    outer_ = nullptr;
    reading_ = nullptr;
    texts_.resize(1);
    if (!complete_) {
        release();
        comments_ = {};
        return;
    }
    records_.shrink_to_fit();
    obids_.reserve(records_.size());
    for (cRecord &record : records_) {
        if (record.node && record.node->is_dead()) set_node(record, nullptr); // it was replaced
        obids_.push_back(record.node && record.node->valref() ? record.node->valref()->obid() : 0);
    }
    if (!obids_.empty()) obids_[0] = root_obid_;
    find_kept();
}

// A comment is written at each entry of its value.
void cSourceRecorder::find_kept() {
    std::unordered_map<std::uint32_t, bool> written; // by the value
    for (cComment const &comment : comments_)
        if (comment.obid != 0) written[comment.obid] = false;
    for (std::size_t i = 0; i < obids_.size() && !written.empty(); ++i)
        if (auto const value = written.find(obids_[i]); value != written.end() && !value->second)
            value->second = shows_comment(i);
    for (cComment &comment : comments_) comment.kept = comment.obid != 0 && written[comment.obid];
}

// Whether the writer would write a comment of the value. It does so after an entry that has its own
// line, and after the opening bracket of a container on many lines.
bool cSourceRecorder::shows_comment(std::size_t number) const {
    if (number == 0) return root_on_lines_;
    cAttrNode const *const node = records_[number].node;
    cAttrHash const *const hash = node->map();
    if (hash_of(node->value()) && !is_in_form(node->value(), 's'))
        return is_in_form(node->value(), 'w');
    return !hash || !hash->father() || !is_in_form(*hash->father(), 's');
}

std::uint32_t cSourceRecorder::offset(unsigned position, unsigned line) const {
    std::uint32_t const inner = position + line - 1;
    if (texts_.size() == 1) return inner + uncounted_;
    auto const &shifts = texts_.back().shifts;
    auto const after = [](std::uint32_t at, cGathering::cShift const &s) { return at < s.offset; };
    auto const next = std::upper_bound(shifts.begin(), shifts.end(), inner, after);
    return next == shifts.begin() ? inner : inner + std::prev(next)->by;
}

void cSourceRecorder::cGathering::token(cToken const &token, std::size_t size) {
    if (token.code == tkComment) return recorder_->comment(token, false);
    recorder_->after_comments(token);
    auto const inner = static_cast<std::uint32_t>(size);
    std::uint32_t const by = recorder_->begin_of(token) - inner;
    if (shifts_.empty() || shifts_.back().by != by) shifts_.push_back({inner, by});
}

void cSourceRecorder::enter(std::istream const &is, cGathering &gathering) {
    texts_.push_back({&is, std::move(gathering.shifts_)});
}

void cSourceRecorder::leave() { texts_.pop_back(); }

// --- records ---

std::uint32_t cSourceRecorder::add(std::uint32_t begin) {
    auto const number = static_cast<std::uint32_t>(records_.size());
    cRecord record;
    record.value_begin = record.value_end = begin;
    if (!frames_.empty()) {
        record.parent = static_cast<std::uint32_t>(frames_.back().record);
        cRecord &around = records_[record.parent];
        if (around.value_begin == absent) around.value_begin = begin;
    }
    records_.push_back(record);
    return number;
}

void cSourceRecorder::literal(cToken const &token) {
    std::size_t const depth = frames_.size();
    begin(begin_of(token));
    if (frames_.size() > depth) close(end_of(token));
}

void cSourceRecorder::begin(std::uint32_t begin) {
    if (pending_ != none) {
        cRecord &record = records_[pending_];
        record.value_begin = record.value_end = begin;
        frames_.push_back({pending_});
    } else {
        if (frames_.empty() && !records_.empty()) return; // after the outermost value
        frames_.push_back({add(begin)});
    }
    pending_ = last_ = none;
}

void cSourceRecorder::bracket(std::uint32_t offset, int code, std::uint32_t name_end) {
    if (frames_.empty()) return;
    cRecord &record = records_[frames_.back().record];
    record.open = offset;
    record.name_end = name_end;
    frames_.back().close = static_cast<unsigned char>(Brackets(code).close);
}

void cSourceRecorder::reference() {
    if (!frames_.empty()) records_[frames_.back().record].reference = true;
}

void cSourceRecorder::end(cAttrScan const &scan, std::size_t depth, cAttrLiteral const &first,
                          int delimiter, objref const &value) {
    if (frames_.size() <= depth) return;
    unwind(depth + 1);
    cFrame const frame = frames_.back();
    cRecord &record = records_[frame.record];
    cToken const &token = scan.current();
    if (record.open != absent) {
        record.closed = frame.close != 0 && token.code == frame.close;
        close(record.closed ? begin_of(token) + 1 : std::max(begin_of(token), record.open + 1));
    } else {
        close(record.reference && token.code == ')' ? begin_of(token) + 1 : end_of(first));
    }
    if (frame.record == 0 && value) root(*value);
    if (token.code == delimiter) after(token);
}

void cSourceRecorder::close(std::uint32_t end) {
    last_ = frames_.back().record;
    records_[last_].value_end = end;
    frames_.pop_back();
    pending_ = none;
}

void cSourceRecorder::unwind(std::size_t depth) {
    while (frames_.size() > depth) {
        no_value();
        cRecord const &record = records_[frames_.back().record];
        std::uint32_t end = record.open != absent ? record.open + 1 : record.value_begin;
        if (last_ != none) end = records_[last_].end();
        close(end == absent ? text_begin_ : end);
    }
}

void cSourceRecorder::delimiter(std::uint32_t offset) {
    if (last_ == none || records_[last_].delimiter != absent) return;
    records_[last_].delimiter = offset;
}

// Everything inside the key belongs to it.
void cSourceRecorder::key(std::uint32_t separator) {
    if (last_ == none) return;
    truncate(last_ + 1);
    cRecord &record = records_[last_];
    cRecord entry;
    entry.parent = record.parent;
    entry.key_begin = record.value_begin;
    entry.key_end = record.value_end;
    entry.separator = separator;
    entry.value_begin = entry.value_end = separator + 1;
    record = entry;
    pending_ = std::exchange(last_, none);
}

void cSourceRecorder::no_value() {
    if (pending_ != none) last_ = std::exchange(pending_, none);
}

void cSourceRecorder::truncate(std::size_t size) {
    if (records_.size() == size) return;
    for (std::size_t i = size; i < records_.size(); ++i)
        if (records_[i].node) records_[i].node->unhold();
    records_.resize(size);
    by_anid_.clear();
}

// --- the outermost value as a list of entries ---

void cSourceRecorder::begin_list(cAttrScan const &scan) {
    if (!frames_.empty() || !records_.empty()) return;
    cToken const &token = scan.current();
    bool const has_bracket = Brackets(token.code).open != 0;
    frames_.push_back({add(has_bracket ? begin_of(token) : absent)});
    if (has_bracket) bracket(begin_of(token), token.code);
}

void cSourceRecorder::end_list(cAttrScan const &scan, std::size_t depth, cObj const *holder) {
    if (frames_.size() != depth + 1 || frames_.back().record != 0) return;
    cToken const &token = scan.current();
    records_[0].closed = frames_.back().close != 0 && token.code == frames_.back().close;
    if (records_[0].closed)
        close(begin_of(token) + 1);
    else
        unwind(depth);
    if (records_[0].value_begin == absent) records_[0].value_begin = records_[0].value_end;
    if (holder) root(*holder);
}

void cSourceRecorder::begin_list_at_key() {
    if (!frames_.empty() || last_ != 0) return;
    truncate(1);
    cRecord list;
    list.value_begin = list.value_end = records_[0].value_begin;
    records_.insert(records_.begin(), list);
    records_[1].parent = 0;
    frames_.push_back({0});
    last_ = 1;
}

void cSourceRecorder::root(cObj const &value) {
    root_obid_ = value.obid();
    root_type_ = value.type().name();
    root_on_lines_ = hash_of(value) && is_in_form(value, 'w');
}

// --- nodes ---

void cSourceRecorder::set_node(cRecord &record, cAttrNode const *node) {
    if (node) node->hold();
    if (record.node) record.node->unhold();
    record.node = node;
    by_anid_.clear();
}

void cSourceRecorder::stored(cAttrNode const *node) {
    if (last_ != none && node) set_node(records_[last_], node);
}

void cSourceRecorder::moved(cObj const &from, cObj const &to) {
    if (last_ != none) move(last_, records_.size(), from, to);
}

void cSourceRecorder::moved_inside(cObj const &from, cObj const &to) {
    if (!records_.empty())
        move(frames_.empty() ? 0 : frames_.back().record, records_.size(), from, to);
    if (frames_.empty()) root(to);
}

// A vector is copied over another or appended to it: in both cases its last item becomes the last
// item.
void cSourceRecorder::move(std::size_t number, std::size_t end, cObj const &from, cObj const &to) {
    cAttrHash const *const old = hash_of(from), *const now = hash_of(to);
    if (!old || !now || old == now || old->has_foreign_keys() || now->has_foreign_keys()) return;
    int const shift = static_cast<int>(now->used()) - static_cast<int>(old->used());
    auto const found = [&](cAttrNode const &node) -> cAttrNode const * {
        if (cObj::is_vector(&to)) {
            int const index = node.key_as_index(); // below 0 if it isn't one
            return index < 0 ? nullptr : now->find(cat::of(index + shift));
        }
        if (!cObj::is_set(&to)) return now->find(node.key());
        cAttrNode const *const same = now->findvalref(node.valref().get());
        return same || !cat::is_plain(node.value()) ? same : now->findvalue(node.value());
    };
    for (std::size_t i = number + 1; i < end; i = next_sibling(i)) {
        cRecord &record = records_[i];
        if (!record.node && record.key_begin == absent) move(i, next_sibling(i), from, to);
        if (!record.node || record.node->is_dead()) continue;
        cAttrNode const *const node = found(*record.node);
        if (!node || node == record.node) continue;
        objref const before = record.node->valref(), after = node->valref();
        cAttrNode const *item = nullptr; // of a list to which the value was appended
        if (before != after && before && after) {
            move(i, next_sibling(i), *before, *after);
            if (cAttrHash const *const list = cObj::is_map(after) ? nullptr : hash_of(*after))
                item = list->findvalref(before);
            if (!item && !accepts_merge(*after, *before)) {
                set_node(record, nullptr);
                continue;
            }
        }
        set_node(record, item ? item : node);
    }
}

// --- comments ---

void cSourceRecorder::comment(cToken const &token, bool collected) {
    std::string_view text = token.text;
    std::size_t const white = std::min(text.find('/'), text.size());
    unsigned const lines = lines_in(text.substr(0, white));
    cComment comment;
    comment.before = begin_of(token);
    comment.span.begin = comment.before + static_cast<std::uint32_t>(white);
    comment.column = token.column + static_cast<unsigned>(white);
    if (lines > 0) comment.column = static_cast<unsigned>(white - text.rfind('\n', white) - 1);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
    comment.span.end = comment.before + static_cast<std::uint32_t>(text.size());
    comment.pending = collected;
    comment.lines_before = lines;
    if (comment_open_) {
        cComment &before = comments_.back();
        before.next = comment.span.begin;
        before.lines_after = comment.lines_before = token.line + lines - comment_line_;
    }
    comment_line_ = token.line + lines_in(text);
    comment_open_ = true;
    comments_.push_back(comment);
    is_attached_ = false;
}

void cSourceRecorder::after_comments(cToken const &token) {
    if (!std::exchange(comment_open_, false)) return;
    bool const space = token.code == tkSpace;
    cComment &comment = comments_.back();
    comment.next = space ? end_of(token) : begin_of(token);
    comment.lines_after = token.line + (space ? lines_in(token.text) : 0) - comment_line_;
}

void cSourceRecorder::handed(cObj const *holder) {
    for (; first_pending_ < comments_.size(); ++first_pending_) {
        cComment &comment = comments_[first_pending_];
        if (std::exchange(comment.pending, false) && holder) comment.obid = holder->obid();
    }
}

// --- looking up ---

std::vector<std::uint32_t> const &cSourceRecorder::by_anid() const {
    if (!by_anid_.empty()) return by_anid_;
    for (std::uint32_t i = 0; i < records_.size(); ++i)
        if (records_[i].node) by_anid_.push_back(i);
    auto const anid = [this](std::uint32_t i) { return records_[i].node->anid(); };
    std::stable_sort(by_anid_.begin(), by_anid_.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return anid(a) < anid(b); });
    return by_anid_;
}

std::size_t cSourceRecorder::next_sibling(std::size_t number) const {
    auto const first = records_.begin() + static_cast<std::ptrdiff_t>(number) + 1;
    auto const before = [](cRecord const &record, std::uint32_t end) {
        return record.begin() < end;
    };
    auto const next = std::lower_bound(first, records_.end(), records_[number].value_end, before);
    return static_cast<std::size_t>(next - records_.begin());
}

std::size_t cSourceRecorder::at(std::uint32_t offset) const {
    auto const after = [](std::uint32_t at, cRecord const &record) { return at < record.begin(); };
    auto const next = std::upper_bound(records_.begin(), records_.end(), offset, after);
    if (next == records_.begin()) return none;
    auto number = static_cast<std::size_t>(next - records_.begin()) - 1;
    while (offset >= records_[number].end()) {
        if (records_[number].parent == absent) return none;
        number = records_[number].parent;
    }
    return number;
}

std::uint32_t cSourceRecorder::root_end() const noexcept {
    return records_.empty() ? text_begin_ : records_[0].end();
}

} // namespace cat
