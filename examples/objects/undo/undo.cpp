// Edits a tree of objects, undoes the edits and redoes them. An edit changes one entry of one map;
// the map's signal `changed` reports edits and undone edits.
//
// An edit stores the old value, the new value, and the following entry, so that it can restore the
// order too. Values in the tree are replaced and never assigned to, so the stored values do not
// change.
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cundo.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>

namespace {

using mapref = cRef<cMapObj>;

// Selects the edits of one map. A null info selects all edits.
struct cEditsOf : cUndoInfoBase {
    explicit cEditsOf(cObj const *obj) : map(obj) {}
    cObj const *map;
};

// Adds the action to the list. An inactive list does not store it, and it is then destroyed here.
void keep(cUndoGlobalList &list, std::unique_ptr<cUndo> action) {
    if (list.add(action.get())) static_cast<void>(action.release());
}

class cEdit : public cUndo {
  public:
    // The value cat::badfind() means that there is no entry.
    cEdit(mapref const &map, std::string const &key, objref const &before, objref const &after)
        : map_(map), key_(key), before_(before), after_(after),
          cost_(cat::as_text(before).size() + cat::as_text(after).size()) {
        cAttrHash const &hash = map->datamap();
        cAttrNode const *const node = hash.find(key);
        if (node && hash.next(node)) follower_ = hash.next(node)->key();
    }
    cEdit(cEdit const &) = delete;
    cEdit &operator=(cEdit const &) = delete;
    ~cEdit() override = default;

    // False if the map refuses.
    bool carry_out() const {
        bool const is_new = !map_->datamap().find(key_);
        if (!map_->setattr(make_key(key_), after_)) return false;
        if (is_new && follower_) // back to its old position
            map_->datamap().insert(make_key(key_), after_, map_->datamap().find(follower_));
        return true;
    }

    // The inverse is stored in the other list; undoing an undo is a redo.
    bool undo(cUndoInfoBase *info) override {
        if (!isfor(info)) return false;
        auto inverse = std::make_unique<cEdit>(map_, key_, after_, before_);
        if (!inverse->follower_) inverse->follower_ = follower_;
        if (!inverse->carry_out()) return false;
        inverse->redo_ = !redo_;
        keep(redo_ ? undoGlobalList : redoGlobalList, std::move(inverse));
        map_->changed();
        return true;
    }

    bool isfor(cUndoInfoBase *info) override {
        auto const *const edits = dynamic_cast<cEditsOf *>(info);
        return !info || (edits && edits->map == map_.get());
    }

    int cost() override { return static_cast<int>(std::min<std::size_t>(cost_, 0x7FFFFFFF)); }

    void spare1() override {}
    void spare2() override {}

  private:
    mapref map_;
    std::string key_;
    objref before_, after_, follower_;
    std::size_t cost_; // bytes of text
    bool redo_ = false;
};

// Sets or adds the value at a path; the value cat::badfind() removes the entry. Afterwards, edits
// that were undone before can't be redone: this deactivates the list of redos, which empties it.
bool edit(objref const &root, std::string const &path, objref const &value) {
    std::size_t const cut = path.rfind('/');
    objref const owner = cut == path.npos ? root : root->getattrp(path.substr(0, cut));
    auto const map = mapref::share(dynamic_cast<cMapObj *>(owner.get()));
    if (!map) return false;
    std::string const key = path.substr(cut + 1);
    auto action = std::make_unique<cEdit>(map, key, map->getattr(make_key(key)), value);
    if (!action->carry_out()) return false;
    if (redoGlobalList.fActive()) {
        redoGlobalList.setActive(false);
        redoGlobalList.setActive(true);
    }
    keep(undoGlobalList, std::move(action));
    map->changed();
    return true;
}

// Prints an object when its signal `changed` is fired.
class cView {
  public:
    cView(char const *title, objref const &obj)
        : title_(title), obj_(obj), slot_(this, &cView::show, obj->force_changed_signal()) {}
    cView(cView const &) = delete;
    cView &operator=(cView const &) = delete;
    ~cView() = default;

  private:
    void show() {
        std::string const text = cat::as_text(obj_);
        std::cout << "  " << title_ << ' ';
        if (text.size() < 80)
            std::cout << text << '\n';
        else
            std::cout << text.size() << " bytes\n";
    }

    char const *title_;
    objref obj_;
    cSlot<cView> slot_;
};

void print_lists() {
    std::cout << "  undo: " << (undoGlobalList.fIsUndo(nullptr) ? "yes" : "no")
              << ", redo: " << (redoGlobalList.fIsUndo(nullptr) ? "yes" : "no") << '\n';
}

} // namespace

int main() {
    sig_idle();              // discards the start-up text
    cConsoleDisplay display; // from here on, std::cout is shown

    objref device;
    cObj::readobj("{bus= {parity= none; baud= 9600; }; limits= {high= 60; }; photo= {}; }", device);
    objref const bus = device->getattrp("bus");
    cView const bus_view("bus", bus), limits_view("limits", device->getattrp("limits"));

    std::cout << "Edit the bus: set, remove and add an entry. Edit the limits: set an entry.\n";
    edit(device, "bus/baud", cat::of(19200));
    edit(device, "bus/parity", cat::badfind());
    edit(device, "bus/gateway", cat::of("rack"));
    edit(device, "limits/high", cat::of(85));

    std::cout << "Undo the two newest edits of the bus. The edit of the limits stays.\n";
    cEditsOf of_bus(bus);
    undoGlobalList.makeUndo(&of_bus);
    undoGlobalList.makeUndo(&of_bus);

    std::cout << "Redo one edit. Then undo the two newest edits.\n";
    redoGlobalList.makeUndo(nullptr);
    undoGlobalList.makeUndo(nullptr);
    undoGlobalList.makeUndo(nullptr);
    print_lists();

    std::cout << "After a new edit, nothing can be redone.\n";
    edit(device, "limits/low", cat::of(-20));
    print_lists();

    std::cout << "Add pictures of 12 MB. Above 32 MiB in total, the list drops the oldest edits.\n";
    cView const photo_view("photo", device->getattrp("photo"));
    for (char const *name : {"photo/front", "photo/back", "photo/inside", "photo/label"})
        edit(device, name, cat::of(std::string(12'000'000, 'x')));
    std::cout << "  an edit of the bus to undo: "
              << (undoGlobalList.fIsUndo(&of_bus) ? "yes" : "no") << '\n';
    while (undoGlobalList.fIsUndo(nullptr)) undoGlobalList.makeUndo(nullptr);

    std::cout << "Inactive lists store no edits.\n";
    undoGlobalList.setActive(false);
    redoGlobalList.setActive(false);
    edit(device, "bus/baud", cat::of(300));
    print_lists();
    return 0;
}
