#include "tools/qrv/output/lines.h"

#include <algorithm>

std::vector<size_t> const &cLines::starts() const {
    if (starts_.empty()) {
        starts_.push_back(0);
        for (size_t i = bytes_.find('\n'); i != bytes_.npos; i = bytes_.find('\n', i + 1))
            starts_.push_back(i + 1);
    }
    return starts_;
}

size_t cLines::offset(cPlace place) const {
    if (place.line == 0 || place.line > starts().size()) return bytes_.size();
    return std::min(bytes_.size(), starts_[place.line - 1] + place.column - 1);
}

cPlace cLines::place(size_t offset) const {
    auto const after = std::upper_bound(starts().begin(), starts().end(), offset);
    auto const line = static_cast<unsigned>(after - starts_.begin());
    return {line, static_cast<unsigned>(offset - starts_[line - 1]) + 1};
}

std::string_view cLines::line(unsigned number) const {
    size_t const begin = offset({number, 1});
    size_t end = number < starts().size() ? starts_[number] - 1 : bytes_.size();
    if (end > begin && bytes_[end - 1] == '\r') --end;
    return std::string_view(bytes_).substr(begin, end - begin);
}
