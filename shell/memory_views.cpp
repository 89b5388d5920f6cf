#include "memory_views.h"

#include "settings/settings_store.h"
#include "window_place.h"

namespace mb {

MemoryViews::MemoryViews(Machine& m, AccessHooks& hooks, SettingsStore& settings,
                         std::function<void(const std::string&)> message, QWidget* parent)
    : m_(m), hooks_(hooks), settings_(settings), message_(std::move(message)), parent_(parent) {
    refreshEditors_ = settings_.GetSettingInt("Refresh Memory Editor New", 1) != 0;
}

// The windows are children of the main window and go with it; the hooks must
// not call them any more.
MemoryViews::~MemoryViews() {
    hooks_.MemoryViewsOpen = hooks_.PortsEditorOpen = false;
}

MemoryEditorWindow* MemoryViews::memoryEditor(int number) const {
    return number >= 1 && number <= 3 ? editors_[static_cast<size_t>(number - 1)] : nullptr;
}

void MemoryViews::Opened(QWidget* window) {
    window->setAttribute(Qt::WA_DeleteOnClose);
    UpdateHooks();
    ShowToolWindow(*window);
}

void MemoryViews::OpenMemoryEditor(int number) {
    if (number < 1 || number > 3) return;
    OpenIn(editors_[static_cast<size_t>(number - 1)], number);
}

void MemoryViews::OpenPortsEditor() {
    OpenIn(ports_);
}

void MemoryViews::OpenVideoScreen() {
    OpenIn(video_);
}

void MemoryViews::UpdateHooks() {
    bool editorOpen = false;
    for (MemoryEditorWindow* editor : editors_) editorOpen = editorOpen || editor;
    hooks_.MemoryViewsOpen = (editorOpen && refreshEditors_) || video_;
    hooks_.PortsEditorOpen = ports_ != nullptr;
    hooks_.UpdateMask(m_);
}

void MemoryViews::RedrawAll() {
    if (refreshEditors_) {
        for (MemoryEditorWindow* editor : editors_) {
            if (editor) editor->Refresh();
        }
        if (video_) video_->memorijaprint(true);
    }
    if (ports_) ports_->ioprint();
}

void MemoryViews::MemoryEdited() {
    for (MemoryEditorWindow* editor : editors_) {
        if (editor) editor->Refresh();
    }
    if (video_) video_->memorijaprint(true);
}

void MemoryViews::ApplyOptions() {
    refreshEditors_ = settings_.GetSettingInt("Refresh Memory Editor New", 1) != 0;
    const bool ascii = settings_.GetSettingInt("Show ASCII Characters", 1) != 0;
    for (MemoryEditorWindow* editor : editors_) {
        if (editor) editor->SetShowAscii(ascii);
    }
    UpdateHooks();
}

void MemoryViews::CloseAll() {
    for (MemoryEditorWindow* editor : editors_) {
        if (editor) editor->close();
    }
    if (ports_) ports_->close();
    if (video_) video_->close();
}

}  // namespace mb
