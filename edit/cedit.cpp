#include "qrv/edit/cedit.h"

#include "edit/cnewtext.h"

namespace qrv::edit {

std::string apply(std::string_view text, cat::SourceMap const &map, objref const &root,
                  std::function<void()> const &change) {
    Entries const entries(map); // with the nodes as they are before the change
    Snapshot const before(root);
    change(); // RUNS USER CODE
    Plan const plan(text, entries, before, root);
    Page const page(text);
    return NewText(page, entries, plan).all();
}

} // namespace qrv::edit
