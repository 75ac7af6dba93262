// Slices compared with plain lists: every start and count around small vectors, and at the limits
// of int.

#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

#include <algorithm>
#include <limits>

using namespace trees;

namespace {

using cList = std::vector<int>;
using wide = long long;

constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
constexpr int numbers[] = {least, least + 1, -7, -3, -2, -1, 0,        1,
                           2,     3,         4,  5,  6,  9,  most - 1, most};

std::string text(cList const &list) {
    std::string result;
    for (int const number : list) result += (result.empty() ? "" : ", ") + std::to_string(number);
    return "[" + result + "]";
}

cList counted(int count, int from) {
    cList list;
    for (int i = 0; i < count; ++i) list.push_back(from + i);
    return list;
}

void model_erase(cList &list, wide start, wide count) {
    wide const end = std::min(start + count, static_cast<wide>(list.size()));
    wide const first = std::max(start, 0LL);
    if (count != 0 && first < end) list.erase(list.begin() + first, list.begin() + end);
}

cList model_getslice(cList const &list, wide start, wide count) {
    cList slice;
    for (wide i = std::max(start, 0LL); i < start + count && i < static_cast<wide>(list.size());
         ++i)
        slice.push_back(list[static_cast<size_t>(i)]);
    return slice;
}

bool model_setslice(cList &list, cList const &source, wide start, wide count) {
    wide const end = std::min(start + count, static_cast<wide>(list.size()));
    wide const first = std::max(start, 0LL);
    if (first > end) return false;
    if (end != 0) model_erase(list, first, end);
    list.insert(list.begin() + first, source.begin(), source.end());
    return true;
}

template <class Body> void for_all_slices(Body body) {
    for (int size = 0; size <= 6; ++size)
        for (int const start : numbers)
            for (int const count : numbers) {
                SCOPED_TRACE(std::to_string(size) + " values, start " + std::to_string(start) +
                             ", count " + std::to_string(count));
                body(size, start, count);
            }
}

class SlicesModel : public QrvTest {};

TEST_F(SlicesModel, getslice_of_vectors_sets_and_maps_follows_the_model) {
    for_all_slices([](int size, int start, int count) {
        std::string const expected = text(model_getslice(counted(size, 0), start, count));
        vectorref const v = ints(size);
        setref const s = set();
        mapref const m = map();
        for (int i = 0; i < size; ++i) {
            s->append(of(i));
            m->setattr(of(std::to_string(i).c_str()), of(i));
        }
        for (objref const &source : {objref(v), objref(s), objref(m)})
            EXPECT_EQ(shape(source->getslice(start, count, nullptr)), expected);
    });
}

TEST_F(SlicesModel, erase) {
    for_all_slices([](int size, int start, int count) {
        cList expected = counted(size, 0);
        model_erase(expected, start, count);
        vectorref const v = ints(size);
        EXPECT_TRUE(v->erase(start, count));
        EXPECT_EQ(shape(v), text(expected));
        EXPECT_TRUE(v->datamap().is_vector());
    });
}

TEST_F(SlicesModel, setslice) {
    for (int length = 0; length <= 3; ++length)
        for_all_slices([length](int size, int start, int count) {
            cList expected = counted(size, 0);
            bool const result = model_setslice(expected, counted(length, 50), start, count);
            vectorref const v = ints(size);
            EXPECT_EQ(v->setslice(*ints(length, 50), start, count), result);
            EXPECT_EQ(shape(v), text(expected));
            EXPECT_TRUE(v->datamap().is_vector());
        });
}

TEST_F(SlicesModel, setslice_from_itself) {
    for_all_slices([](int size, int start, int count) {
        cList expected = counted(size, 0);
        bool const result = model_setslice(expected, counted(size, 0), start, count);
        vectorref const v = ints(size);
        EXPECT_EQ(v->setslice(*v, start, count), result);
        EXPECT_EQ(shape(v), text(expected));
    });
}

} // namespace
