#include "qrv/text/read/csourcemap.h"

// Existing maps form a list through their owners; the innermost is the head.

#include "qrv/core/cattrhash.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/text/write/cwriter.h"
#include "text/read/csource_recorder.h"

#include <algorithm>
#include <utility>

namespace {

using cat::cSourceRecorder;
using cat::SourceEntry;
using cat::Span;

Span span_of(std::uint32_t begin, std::uint32_t end) {
    return begin == cSourceRecorder::absent ? Span{} : Span{begin, end};
}

Span byte_at(std::uint32_t offset) { return span_of(offset, offset + 1); }

bool has_node(cSourceRecorder::cRecord const &record) {
    return record.node && !record.node->is_dead();
}

// Whether the node is in the enclosing value. The node may have been removed, but its value not.
bool is_in(cAttrNode const &node, cObj const &value) {
    auto const *const map = dynamic_cast<cMapObj const *>(&value);
    return !map || !node.map() || node.map() == &const_cast<cMapObj *>(map)->datamap();
}

// The records from the outermost to the innermost one at an offset that are still in the tree.
std::vector<std::size_t> way_to(cSourceRecorder const &source, std::uint32_t offset) {
    std::vector<std::size_t> way;
    for (std::size_t i = source.at(offset); i != cSourceRecorder::none;) {
        way.push_back(i);
        std::uint32_t const parent = source.records()[i].parent;
        i = parent == cSourceRecorder::absent ? cSourceRecorder::none : parent;
    }
    std::reverse(way.begin(), way.end());
    cAttrNode const *around = nullptr;
    for (std::size_t i = 1; i < way.size(); ++i) {
        cSourceRecorder::cRecord const &record = source.records()[way[i]];
        bool const inner_value = !record.node && record.key_begin == cSourceRecorder::absent;
        if (inner_value && i + 1 < way.size()) continue;
        if (!has_node(record) || (around && !is_in(*record.node, around->value()))) {
            way.resize(i);
            break;
        }
        around = record.node;
    }
    while (way.size() > 1 && !has_node(source.records()[way.back()])) way.pop_back();
    return way;
}

} // namespace

cat::SourceMap::SourceMap() : recorder_(std::make_shared<cSourceRecorder>()) {
    before_ = cSourceRecorder::current();
    cSourceRecorder::current(recorder_.get());
}

cat::SourceMap::~SourceMap() { stop(); }

void cat::SourceMap::stop() noexcept {
    if (std::exchange(recording_, false)) cSourceRecorder::current(before_);
}

bool cat::SourceMap::complete() const noexcept { return recorder_->complete(); }

std::size_t cat::SourceMap::size() const noexcept { return recorder_->records().size(); }

SourceEntry cat::SourceMap::entry(std::size_t number) const {
    constexpr std::uint32_t absent = cSourceRecorder::absent;
    cSourceRecorder::cRecord const &record = recorder_->records()[number];
    SourceEntry entry;
    entry.number = number;
    if (record.parent != absent) entry.parent = record.parent;
    if (has_node(record)) entry.anid = record.node->anid();
    entry.obid = recorder_->obid(number);
    entry.removed = record.node && record.node->is_dead();
    entry.reference = record.reference;
    entry.key = span_of(record.key_begin, record.key_end);
    entry.separator = byte_at(record.separator);
    entry.value = {record.value_begin, record.value_end};
    if (record.name_end != absent) entry.type = {record.value_begin, record.name_end};
    entry.open = byte_at(record.open);
    if (record.closed) entry.close = byte_at(record.value_end - 1);
    entry.delimiter = byte_at(record.delimiter);
    return entry;
}

std::vector<SourceEntry> cat::SourceMap::spans(std::uint32_t anid) const {
    auto const &records = recorder_->records();
    auto const &numbers = recorder_->by_anid();
    auto const before = [&](std::uint32_t i, std::uint32_t id) {
        return records[i].node->anid() < id;
    };
    std::vector<SourceEntry> found;
    auto at = std::lower_bound(numbers.begin(), numbers.end(), anid, before);
    for (; at != numbers.end() && records[*at].node->anid() == anid; ++at)
        if (has_node(records[*at])) found.push_back(entry(*at));
    return found;
}

std::vector<SourceEntry> cat::SourceMap::written(cObj const &value) const {
    std::vector<SourceEntry> found;
    auto const &records = recorder_->records();
    for (std::size_t i = 0; i < records.size(); ++i)
        if (value.obid() != 0 && recorder_->obid(i) == value.obid() && !records[i].reference)
            found.push_back(entry(i));
    return found;
}

std::vector<SourceEntry> cat::SourceMap::inside(std::size_t number) const {
    std::vector<SourceEntry> found;
    std::size_t const end = recorder_->next_sibling(number);
    for (std::size_t i = number + 1; i < end; i = recorder_->next_sibling(i))
        found.push_back(entry(i));
    return found;
}

std::size_t cat::SourceMap::at(std::uint32_t offset) const { return recorder_->at(offset); }

std::string cat::SourceMap::path_at(std::uint32_t offset) const {
    std::vector<std::size_t> const way = way_to(*recorder_, offset);
    std::string path;
    for (std::size_t const i : way)
        if (cAttrNode const *const node = recorder_->records()[i].node)
            path += '/' + as_text(node->key());
    return path.empty() && !way.empty() ? "/" : path;
}

std::string cat::SourceMap::type_at(std::uint32_t offset) const {
    std::vector<std::size_t> const way = way_to(*recorder_, offset);
    if (way.empty()) return {};
    cAttrNode const *const node = recorder_->records()[way.back()].node;
    return node ? node->value().type().name() : recorder_->root_type();
}

std::vector<cat::SourceComment> const &cat::SourceMap::comments() const {
    return recorder_->attached();
}

std::vector<cat::SourceComment> cat::SourceMap::comments(std::size_t number) const {
    std::vector<SourceComment> found;
    for (SourceComment const &comment : comments())
        if (comment.entry == number &&
            (comment.where == SourceComment::above || comment.where == SourceComment::after))
            found.push_back(comment);
    return found;
}

std::uint32_t cat::SourceMap::end() const noexcept { return recorder_->root_end(); }
