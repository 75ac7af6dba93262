// The universal object: identity, states, dispatch. Every dispatched operation has the same
// sequence: tests, then the object's own executable if there is one, else the type's table.

#include "qrv/core/cobj.h"

#include "core/cerr_object.h"
#include "core/cfresh.h"
#include "core/cholders.h"
#include "core/cmember_lookup.h"
#include "core/cregistry.h"
#include "core/cset_index.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

#include <ostream>

namespace {

bool refuse_const(char const *method, cObj const &source) {
    begin_error(err_object_const) << cNamed::name(method)
                                  << "' called from type: " << cNamed::found(source.type().name());
    return raise_eros();
}

objref share(cObj const &obj) { return objref::share(const_cast<cObj *>(&obj)); }

// Keeps an object and its own method alive during the call: the method may remove itself, or the
// object's last owner.
struct cDuring {
    cDuring(cObj const &obj, cObj *exe)
        : self(objref::share(const_cast<cObj *>(&obj))), method(objref::share(exe)) {}
    cDuring(cDuring const &) = delete;
    cDuring &operator=(cDuring const &) = delete;
    ~cDuring() = default;

    objref const self;
    objref const method;
};

// A stream that a method may use during its call. An object of it that the method stores has no
// stream afterwards.
template <class Stream> struct cLentStream {
    struct cHolder : cObjDR<Stream> {
        explicit cHolder(Stream &stream) : cObjDR<Stream>(stream) { this->obid(0); }
        cHolder(cHolder const &) = delete;
        cHolder &operator=(cHolder const &) = delete;
        ~cHolder() override = default;
        void close() noexcept { this->value_ = nullptr; }
    };
    explicit cLentStream(Stream &stream) : made(new cHolder(stream)), holder(objref::adopt(made)) {}
    cLentStream(cLentStream const &) = delete;
    cLentStream &operator=(cLentStream const &) = delete;
    ~cLentStream() { made->close(); }

    cHolder *const made;
    objref const holder;
};

} // namespace

cObj::cObj(bool typed) : cObj(typed ? &cat::type_nil() : nullptr) {}

cObj::cObj(cTypeObj *type, cObjClass object_class) noexcept
    : cObj(cat::cBuiltinType{type}, object_class) {
    if (core.counting_types != 0 && type && type->counts_) [[unlikely]] {
        ++type->objects_;
        class_ |= holds_type_bit;
    }
}

cObj::~cObj() {
    if (obid_ != 0) --ob_count_;
    leave_ommap();
    if (holds_type()) [[unlikely]]
        release_type(); // RE-ENTERS
}

void cObj::leave_set_index() const noexcept { cSetIndex::loosen(*this); }

void cObj::set_type(cTypeObj *type) noexcept {
    before_change();
    if (type && type->counts_) ++type->objects_;
    cTypeObj *const old = holds_type() ? type_ : nullptr;
    type_ = type;
    class_ &= static_cast<std::uint16_t>(~holds_type_bit);
    if (type && type->counts_) class_ |= holds_type_bit;
    if (old) old->leave_object(); // RE-ENTERS
}

// Releases the members before the type: code that their destructors call may still need the type.
void cObj::release_type() noexcept {
    ommap_ = nullptr;  // RE-ENTERS
    set_type(nullptr); // RE-ENTERS
}

bool cObj::is_ObjDR() const { return false; }

void cObj::obid(cObj *obj, unsigned int id) noexcept {
    if (obj) obj->obid(id);
}

int cObj::typeflags_of(int bits) const noexcept { return type_ ? type_->flags_of(bits) : 0; }

bool cObj::is_void(cObj const *obj) noexcept {
    return !obj || !obj->type_ || obj->type_ == core.niltype;
}

bool cObj::is_nil(cObj const *obj) noexcept { return obj && core.nil && *core.nil == obj; }

bool cObj::is_bad(cObj const *obj) noexcept {
    return !obj || (core.bad && *core.bad == obj) || is_kill(obj);
}

bool cObj::is_kill(cObj const *obj) noexcept {
    return !obj || (core.badfind && *core.badfind == obj);
}

bool cObj::is_map(cObj const *obj) noexcept { return obj && obj->type_ == &cat::type_map(); }

bool cObj::is_set(cObj const *obj) noexcept { return obj && obj->type_ == &cat::type_set(); }

bool cObj::is_vector(cObj const *obj) noexcept { return obj && obj->type_ == &cat::type_vector(); }

cObj &cObj::operator=(cObj const &source) {
    assign(source);
    return *this;
}

cObj &cObj::operator+=(cObj const &source) {
    add(source);
    return *this;
}

cObj &cObj::operator<<(objref const &item) {
    append(item);
    return *this;
}

objref cObj::operator/(objref const &key) { return getattr(key); }

objref cObj::operator/(std::string const &key) { return getattr(own_key(key)); }

objref cObj::operator/(char const *key) {
    return key ? getattr(own_key(std::string(key))) : cat::bad();
}

bool cObj::own_method(method_id id, cExeObj *&exe) const {
    if (!flags_of(of_exe_member) || !ommap_) return false;
    cAttrNode const *const node = ommap_->find(make_key(cTypeObj::name_of(id)));
    if (!node) return false;
    exe = cat::as_exe(node->valref());
    return true;
}

void cObj::create() { create(this); }

void cObj::create(cObj *obj) {
    if (!is_void(obj)) obj->type_->pexec(mid_create, *obj);
}

objref cObj::newref() { return type().oexec(mid_newref, objref::share(this)); }

bool cObj::assign(objref const &source) {
    if (is_void()) return false;
    return is_void(source) || assign(*source);
}

bool cObj::assign(cObj const &source) {
    if (is_void()) return false;
    if (is_void(&source)) return true;
    objref ref = share(source); // held during the call
    if (flags_of(of_const) && !refuse_const("assign", source)) return false;
    if (cExeObj *exe = nullptr; own_method(mid_assign, exe)) {
        cDuring const held(*this, exe);
        return exe && exe->pexecute(*this, ref);
    }
    return type_->pexec(mid_assign, *this, ref);
}

bool cObj::add(objref const &source) {
    if (is_void()) return false;
    return is_void(source) || add(*source);
}

bool cObj::add(cObj const &source) {
    if (is_void()) return false;
    if (is_void(&source)) return true;
    objref ref = share(source);
    if (flags_of(of_const) && !refuse_const("add", source)) return false;
    if (cExeObj *exe = nullptr; own_method(mid_add, exe)) {
        cDuring const held(*this, exe);
        return exe && exe->pexecute(*this, ref);
    }
    return type_->pexec(mid_add, *this, ref);
}

bool cObj::setattr(objref const &key, objref const &value) {
    if (is_void()) return false;
    objref k = key;
    objref v = value;
    if (cExeObj *exe = nullptr; own_method(mid_setattr, exe)) {
        cDuring const held(*this, exe);
        return exe && exe->pexecute(*this, k, v);
    }
    return type_->pexec(mid_setattr, *this, k, v);
}

objref cObj::getattr(objref const &key) {
    if (is_void()) return cat::badfind();
    if (cExeObj *exe = nullptr; own_method(mid_getattr, exe)) {
        cDuring const held(*this, exe);
        return exe ? exe->oexecute(objref::share(this), key) : cat::bad();
    }
    return type_->oexec(mid_getattr, objref::share(this), key);
}

objref cObj::getattr(objref const &key) const { return const_cast<cObj *>(this)->getattr(key); }

bool cObj::write(std::ostream &os) const {
    cLentStream<std::ostream> const lent(os);
    objref holder = lent.holder;
    cObj &self = const_cast<cObj &>(*this);
    if (cExeObj *exe = nullptr; own_method(mid_write, exe)) {
        cDuring const held(*this, exe);
        return exe && exe->pexecute(self, holder);
    }
    return type().pexec(mid_write, self, holder);
}

bool cObj::read(std::istream &is) { // ignores the object's own methods: only the type can read
    cLentStream<std::istream> const lent(is);
    objref holder = lent.holder;
    return type().pexec(mid_read, *this, holder);
}

bool cObj::equal(objref const &other) const { return other && equal(*other); }

bool cObj::equal(cObj const &other) const {
    if (&type() != &other.type()) return false;
    objref ref = share(other);
    return type().pexec(mid_equal, const_cast<cObj &>(*this), ref);
}

bool cObj::less(cObj const &other) const {
    if (&type() != &other.type()) return type().name() < other.type().name();
    if (!type().method(mid_less)) {
        begin_error(err_missing_less, *this);
        raise_eros();
        return true;
    }
    objref ref = share(other);
    return type().pexec(mid_less, const_cast<cObj &>(*this), ref);
}

objref cObj::iterobj() {
    if (cExeObj *exe = nullptr; own_method(mid_iterobj, exe)) {
        cDuring const held(*this, exe);
        return exe ? exe->oexecute(objref::share(this)) : cat::bad();
    }
    return type().oexec(mid_iterobj, objref::share(this));
}

// DELIBERATE: a source without a type is refused, even where there is a converter from "niltype".
//   Pinned: no_converter_is_looked_up_for_a_source_without_a_type
bool cObj::convert(objref const &source) {
    if (!source || !source->type_) return false;
    cTypeObj::converter_function const function = type().converter(*source->type_);
    objref ref = source;
    return function && function(*this, ref);
}

constinit cObj const *cat::cFresh::innermost = nullptr;

objref cObj::clone(bool rethrow) const {
    try {
        objref copy = type().newobj();
        cat::cFresh const fresh(copy);
        return is_good(copy) && copy->assign(*this) ? copy : cat::bad();
    } catch (...) {
        if (rethrow) throw;
        return cat::bad();
    }
}

namespace {

// Does this reference hold one of the library's constants, which the whole process shares?
bool is_constant_holder(objref const &ref) {
#define QRV_SAME(name)                                                                             \
    if (&ref == core.name) return true;
    QRV_CORE_CONSTANTS(QRV_SAME)
#undef QRV_SAME
    return false;
}

} // namespace

bool cat::detach_value(objref const &ref) {
    if (cObj::is_void(ref) || is_constant_holder(ref)) return false;
    if (ref->refs() <= 1) return true;
    objref copy = ref->clone(false);
    if (!cObj::is_good(copy)) return false;
    if (ref) ref->before_change(); // a set may index it; clone() may have set the reference to null
    cHolders::enter_unseen(*copy); // the reference may belong to a node
    cAttrInsert::note_unseen();
    const_cast<objref &>(ref) = std::move(copy);
    return true;
}

namespace {

objref as_key(cObj *key) {
    key->setflags(of_const);
    key->obid(0);
    return objref::adopt(key);
}

} // namespace

objref make_key(std::string const &text) { return as_key(new cObjDR<std::string>(text)); }

objref make_key(int const &number) { return as_key(new cObjDR<int>(number)); }

objref own_key(std::string const &text) { return as_key(new cObjD<std::string>(text)); }

objref own_key(int number) { return as_key(new cObjD<int>(number)); }
