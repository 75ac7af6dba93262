#include "qrv/edit/cedit.h"

#include "edit/cnewtext.h"

namespace qrv::edit {

// Data about the text and the donor's text. Both are parts of one page, so that a number identifies
// an entry, and an offset a position, of either text.
struct Edit::Notes {
    Notes(std::string_view target, cat::SourceMap const &map, objref const &value)
        : text(target), root(value), entries(map), before(value) {}

    std::string_view text;
    objref root;
    Entries entries; // with the nodes as they are before the change
    Snapshot before;
    std::string page; // the text, a newline, and the donor's text; empty without a donor
};

Edit::Edit(std::string_view text, cat::SourceMap const &map, objref const &root)
    : notes_(std::make_unique<Notes>(text, map, root)) {}

Edit::~Edit() = default;

void Edit::bring(std::string_view text, cat::SourceMap const &map, objref const &root) {
    notes_->page.assign(notes_->text).append("\n");
    notes_->entries.add_donor(map, notes_->page.size());
    notes_->before.add_donor(root);
    notes_->page += text;
}

void Edit::put_above(std::uint32_t anid) { notes_->entries.write_above(anid); }

bool Edit::changed() const { return notes_->before.changed(notes_->root); }

std::string Edit::text(Repeated repeated) const {
    notes_->entries.write_once(repeated == Repeated::once ? notes_->before.in_changed()
                                                          : std::unordered_set<std::uint32_t>());
    bool const alone = notes_->page.empty();
    Page const page(alone ? notes_->text : std::string_view(notes_->page), notes_->text.size());
    Plan const plan(page.text(), notes_->entries, notes_->before, notes_->root);
    return NewText(page, notes_->entries, plan).all();
}

std::string apply(std::string_view text, cat::SourceMap const &map, objref const &root,
                  std::function<void()> const &change) {
    Edit const edit(text, map, root);
    change(); // RUNS USER CODE
    return edit.text();
}

} // namespace qrv::edit
