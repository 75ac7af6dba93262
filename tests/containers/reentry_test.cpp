// Containers with hostile content: keys whose hooks change the container, keys that no search
// finds, and values that release or empty the container during an operation.

#include "containers/as_map.h"
#include "qrv/containers/cattr.h"
#include "qrv/core/ceros.h"
#include "tests/containers/trees.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

using namespace trees;

namespace {

class Reentry : public QrvTest {};

// --- keys

// Each call of a hook adds a key and removes it again.
void never_rests(cAttrHash &hash) {
    static int calls;
    if (++calls > 100000) throw std::runtime_error("asked for ever");
    auto const next = [&hash] { never_rests(hash); };
    hash.mapitem("passing", cat::nil());
    hash.delitem("passing");
    cHostileType::in_heq = next;
}

TEST_F(Reentry, a_hook_that_always_changes_the_table_is_not_called_forever) {
    cHostileType const hostile;
    cAttrHash hash(nullptr);
    hash.mapitem(hostile.key(1), of(1));
    hash.mapitem("text", of(2));
    cHostileType::in_heq = [&hash] { never_rests(hash); };
    EXPECT_EQ(hash.find(hostile.key(2)), nullptr);
    EXPECT_TRUE(hash.delitem(hostile.key(2)));
    EXPECT_TRUE(hash.mapitem(hostile.key(2), of(3)));
    EXPECT_EQ(shape(hash.getitem("text")), "2");
    cHostileType::reset();
    EXPECT_EQ(shape(hash.getitem(hostile.key(2))), "3");
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Reentry, an_empty_child_under_a_key_that_no_search_finds_stays) {
    for (bool const recursive : {false, true}) {
        mapref const m = map({{"a", 1}});
        m->datamap().mapitem(cat::of(true), map()); // bool has no hash
        m->datamap().mapitem("b", map());
        m->datamap().mapitem("c", map({{"d", 1}}));
        m->remove_emptychilds(recursive);
        EXPECT_EQ(shape(m), "{a=1, true={}, c={d=1}}");
    }
}

TEST_F(Reentry, merging_survives_keys_that_remove_others_from_the_target) {
    cHostileType const hostile;
    mapref const target = map({{"a", 1}});
    mapref const source = map();
    for (int i = 0; i < 6; ++i) {
        target->datamap().mapitem(hostile.key(i), of(i));
        source->datamap().mapitem(hostile.key(5 - i), of(10 + i));
    }
    auto const questions = [&] {
        cHostileType::reset();
        for (int i = 5; i >= 3; --i) (void)target->datamap().find(hostile.key(i));
        return cHostileType::heq_calls;
    }();
    cHostileType::reset();
    std::function<void()> wait = [&] {
        if (cHostileType::heq_calls < questions)
            cHostileType::in_heq = wait;
        else // the keys 5 and 4 are in the list now
            target->datamap().clear();
    };
    cHostileType::in_heq = wait;
    EXPECT_TRUE(target->attrcopy(*source, "-s-"));
    EXPECT_EQ(target->datamap().broken_rule(true), "");
    EXPECT_EQ(shape(source->datamap().getitem(hostile.key(0))), "15");
}

TEST_F(Reentry, comparing_survives_keys_that_empty_the_containers) {
    for (int emptied = 0; emptied < 3; ++emptied) {
        cHostileType const hostile;
        mapref const a = map(), b = map();
        for (int i = 0; i < 3; ++i)
            for (mapref const &m : {a, b}) m->datamap().mapitem(hostile.key(i), of(i));
        auto const act = [&] {
            if (emptied != 1) a->clear();
            if (emptied != 0) b->clear();
        };
        cHostileType::in_heq = act;
        (void)a->equal(*b);
        messages();
        cHostileType::in_heq = act;
        (void)a->equal_unsorted(*b);
        EXPECT_EQ(a->size(), emptied == 1 ? 3 : 0);
    }
}

// --- values

using cOperation = bool (*)(cMapObj &holder, objref const &other);

// The first value of a container holds its last owner, and releases it in its destructor.
template <class T> void let_go_in(cOperation operation) {
    cRef<T> owner = make<T>();
    T &holder = *owner;
    holder.datamap().vect_append(on_destroy([&owner] { owner = nullptr; }));
    for (int i = 1; i < 4; ++i) holder.datamap().vect_append(of(i));
    vectorref const other = vector({5, 6, 7, 8, 9});
    (void)operation(holder, other);
    owner = nullptr;
}

constexpr cOperation for_all[] = {
    [](cMapObj &m, objref const &) { return m.clear(), true; },
    [](cMapObj &m, objref const &) { return m.setattr(of(0), nullptr); },
    [](cMapObj &m, objref const &) { return m.setattr(of(0), of(8)); },
    [](cMapObj &m, objref const &) { return m.copyitem(of(0), of(8), false); },
    [](cMapObj &m, objref const &other) { return m.assign(other); },
    [](cMapObj &m, objref const &other) { return m.add(other); },
    [](cMapObj &m, objref const &other) { return m.attrcopy(*other, "0s-"); },
    [](cMapObj &m, objref const &other) { return m.attrcopy(*other, "00x"); },
    [](cMapObj &m, objref const &other) { return m.attrcopy(*other, "-s0"); },
    [](cMapObj &m, objref const &) { return m.detach(true); },
    [](cMapObj &m, objref const &) { return m.valref_(of(0)) = of(1), true; },
    [](cMapObj &m, objref const &) { return m.submap(of(0)), true; },
    [](cMapObj &m, objref const &) { return m.call("clear")->is_good(); },
};

constexpr cOperation for_vectors[] = {
    [](cMapObj &v, objref const &) { return static_cast<cVectorObj &>(v).insert(0, nullptr); },
    [](cMapObj &v, objref const &) { return static_cast<cVectorObj &>(v).erase(0, 1); },
    [](cMapObj &v, objref const &) { return static_cast<cVectorObj &>(v).erase(0, 4); },
    [](cMapObj &v, objref const &other) {
        return static_cast<cVectorObj &>(v).setslice(*other, 0, 2);
    },
    [](cMapObj &v, objref const &other) {
        return static_cast<cVectorObj &>(v).setslice(*other, 0, 4);
    },
};

TEST_F(Reentry, a_value_may_release_the_last_owner) {
    cErrorLog const errors;
    for (cOperation const operation : for_all) {
        let_go_in<cMapObj>(operation);
        let_go_in<cVectorObj>(operation);
        let_go_in<cSetObj>(operation);
    }
    for (cOperation const operation : for_vectors) let_go_in<cVectorObj>(operation);
}

// The same with a value that empties its container, or fills it again, in its destructor.
template <class T> void change_in(cOperation operation, bool fill) {
    cRef<T> const holder = make<T>();
    cAttrHash &hash = holder->datamap();
    hash.vect_append(on_destroy([&hash, fill] {
        if (!fill) return hash.clear();
        for (int i = 0; i < 100; ++i) hash.vect_insert(0, of(i));
    }));
    for (int i = 1; i < 4; ++i) hash.vect_append(of(i));
    (void)operation(*holder, vector({5, 6, 7, 8, 9}));
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Reentry, a_destroyed_value_may_change_its_container) {
    cErrorLog const errors;
    for (bool const fill : {false, true}) {
        for (cOperation const operation : for_all) {
            change_in<cMapObj>(operation, fill);
            change_in<cVectorObj>(operation, fill);
            change_in<cSetObj>(operation, fill);
        }
        for (cOperation const operation : for_vectors) change_in<cVectorObj>(operation, fill);
    }
}

// One of the values is null, which valref_ allows, or bad.
template <class T> void with_stored(cOperation operation, objref const &stored, unsigned place) {
    cRef<T> const holder = make<T>();
    cAttrHash &hash = holder->datamap();
    for (int i = 0; i < 4; ++i) hash.vect_append(of(i));
    hash.findpos(place)->valref_() = stored;
    cRef<T> const other = make<T>();
    for (int i = 0; i < 4; ++i) other->datamap().vect_append(of(5 + i));
    other->datamap().findpos(place)->valref_() = stored;
    for (objref const &argument : {objref(other), objref(holder)}) {
        (void)operation(*holder, argument);
        EXPECT_EQ(hash.broken_rule(true), "");
        EXPECT_TRUE(holder->equal(*holder));
    }
}

TEST_F(Reentry, unusual_values_can_be_stored_anywhere) {
    cErrorLog const errors;
    for (objref const &stored : {objref(), cat::bad(), cat::badfind(), cat::nil()})
        for (unsigned place = 0; place < 4; ++place) {
            for (cOperation const operation : for_all) {
                with_stored<cMapObj>(operation, stored, place);
                with_stored<cVectorObj>(operation, stored, place);
                with_stored<cSetObj>(operation, stored, place);
            }
            for (cOperation const operation : for_vectors)
                with_stored<cVectorObj>(operation, stored, place);
        }
}

// Values whose "equal" and "assign" change the container.
std::function<void()> in_method;

void act_once() {
    if (auto const once = std::exchange(in_method, nullptr)) once();
}

struct cActing {
    typeref type = make<cTypeObj>("acting", set_up);
    objref value() const { return objref::adopt(new cObjD<int>(1, type.get())); }

  private:
    static void set_up(cTypeObj &type) {
        type.set_tmember("newobj", make<cExeMember>(+[](objref of_type) {
                             auto *const own = dynamic_cast<cTypeObj *>(of_type.get());
                             return objref::adopt(new cObjD<int>(0, own));
                         }));
        type.set_tmember("assign", make<cExeMember>(+[](cObj &, objref &) {
                             act_once();
                             return true;
                         }));
        type.set_tmember("equal", make<cExeMember>(+[](cObj &, objref &) {
                             act_once();
                             return false;
                         }));
    }
};

template <class T> void act_in(cOperation operation, bool let_go) {
    cActing const acting;
    cRef<T> owner = make<T>(), other = make<T>();
    T &holder = *owner;
    for (int i = 0; i < 4; ++i)
        for (cRef<T> const &made : {owner, other}) made->datamap().vect_append(acting.value());
    in_method = [&] {
        if (!let_go) owner->clear();
        other->clear();
        if (let_go) owner = nullptr;
    };
    (void)operation(holder, other);
    in_method = nullptr;
    if (owner) {
        EXPECT_EQ(owner->datamap().broken_rule(true), "");
    }
}

// A value of the same kind as the other container.
objref sample(objref const &other) { return cat::as_map(other)->datamap().first()->valref(); }

constexpr cOperation comparing[] = {
    [](cMapObj &m, objref const &other) { return m.append(sample(other)); },
    [](cMapObj &m, objref const &other) { return m.setattr(of(1), sample(other)); },
    [](cMapObj &m, objref const &other) { return m.findvalue(*objref(sample(other))) != nullptr; },
    [](cMapObj &m, objref const &other) { return m.equal(*other); },
    [](cMapObj &m, objref const &other) { return m.equal_unsorted(*other); },
    [](cMapObj &m, objref const &other) { return m.attrcopy(*other, "-xx"); },
    [](cMapObj &m, objref const &other) { return m.attrcopy(*other, "0aa"); },
};

TEST_F(Reentry, methods_of_values_may_empty_or_release_their_container) {
    cErrorLog const errors;
    for (bool const let_go : {false, true}) {
        for (cOperation const operation : for_all) {
            act_in<cMapObj>(operation, let_go);
            act_in<cVectorObj>(operation, let_go);
            act_in<cSetObj>(operation, let_go);
        }
        for (cOperation const operation : comparing) {
            act_in<cMapObj>(operation, let_go);
            act_in<cVectorObj>(operation, let_go);
            act_in<cSetObj>(operation, let_go);
        }
        for (cOperation const operation : for_vectors) act_in<cVectorObj>(operation, let_go);
    }
}

// --- errors thrown in the middle

TEST_F(Reentry, a_locked_type_that_throws_stops_the_move_and_leaves_the_indices_in_order) {
    auto const locked = [] {
        vectorref made = ints(3);
        made->datamap().vect_append(of("text"));
        made->datamap().vect_append(of(4));
        made->datamap().flags(2);
        return made;
    };
    vectorref const silent = locked();
    {
        cErrorLog errors;
        EXPECT_TRUE(silent->erase(0, 1));
        EXPECT_EQ(shape(silent), "[1, 2, 2, text]") << "two entries keep their type";
        EXPECT_EQ(errors.count(), 2u);
        EXPECT_TRUE(silent->insert(1, of(9)));
        EXPECT_EQ(shape(silent), "[1, 9, 2, text, text]");
        EXPECT_EQ(errors.count(), 3u);
    }
    cat::errhandler().throw_mask(0x40000000u);
    vectorref const thrown = locked();
    EXPECT_THROW(thrown->erase(0, 1), cErr);
    EXPECT_EQ(shape(thrown), "[1, 2, 2, text, 4]");
    EXPECT_THROW(thrown->insert(1, of(9)), cErr);
    EXPECT_EQ(shape(thrown), "[1, 2, 2, text, 4, 4]") << "the new entry stays";
    EXPECT_TRUE(thrown->datamap().is_vector());
    EXPECT_EQ(thrown->datamap().broken_rule(true), "");
    messages();
}

TEST_F(Reentry, an_error_in_the_middle_of_a_copy_keeps_the_copied_part) {
    cat::errhandler().throw_mask(0x40000000u);
    mapref const target = map({{"a", 1}});
    target->setflags(of_const_keys);
    EXPECT_THROW(target->attrcopy(*map({{"a", 5}, {"b", 6}}), "0as"), cErr);
    EXPECT_EQ(shape(target), "{a=5}");
    EXPECT_THROW(*target += *map({{"b", 6}}), cErr);
    EXPECT_EQ(shape(target), "{a=5}");
    vectorref const v = vector({1});
    EXPECT_THROW(v->setattr(of(3), of(1)), cErr);
    EXPECT_TRUE(v->attrcopy(*vector({7, 8}), "0ax")) << "the failed call left no state";
    EXPECT_EQ(shape(v), "[7, 8]");
    messages();
}

} // namespace
