// The windows that show memory and ports while the machine runs: the three
// Memory Editors, the I/O Ports Editor and the Video Memory Screen. This object
// opens them, keeps the access hooks told which are open, and carries the
// refreshes of the run loop and of the data paths to them.
#pragma once

#include <QObject>
#include <array>
#include <functional>
#include <string>

#include "core/access.h"
#include "core/host.h"
#include "shell/io_ports_editor_window.h"
#include "shell/memory_editor_window.h"
#include "shell/video_screen_window.h"

class QWidget;

namespace mb {

class SettingsStore;

class MemoryViews : public QObject {
    Q_OBJECT
  public:
    MemoryViews(Machine& m, AccessHooks& hooks, SettingsStore& settings,
                std::function<void(const std::string&)> message, QWidget* parent);
    ~MemoryViews() override;

    // The Tools menu commands; an open window comes to the front.
    void OpenMemoryEditor(int number);  // 1 to 3
    void OpenPortsEditor();
    void OpenVideoScreen();

    // The open windows, or null.
    MemoryEditorWindow* memoryEditor(int number) const;
    IoPortsEditorWindow* portsEditor() const { return ports_; }
    VideoScreenWindow* videoScreen() const { return video_; }

    // Step 9 of the cycle and the data paths (bits of ViewBits): memorijaprint
    // of the editors (with "Refresh Memory Editor" on) and of the screen,
    // ioprint of the ports editor.
    void Refresh(int viewBits) {
        if ((viewBits & kViewMemoryEditors) && refreshEditors_) {
            for (MemoryEditorWindow* editor : editors_) {
                if (editor) editor->memorijaprint();
            }
        }
        if ((viewBits & kViewVideoScreen) && video_) video_->memorijaprint();
        if ((viewBits & kViewPortsEditor) && ports_) ports_->ioprint();
    }
    // Redraws every open window as the machine stands (loads, clean, the end
    // of a run), the memory windows only with "Refresh Memory Editor" on.
    void RedrawAll();
    // Reads "Refresh Memory Editor New" and "Show ASCII Characters".
    void ApplyOptions();
    // Closes the open windows (they keep their places).
    void CloseAll();

  private:
    // Shows the window of the slot, made first when there is none. The slot
    // forgets the window when it closes or goes: only while it still names
    // that window, since a window may be opened again before the old one is
    // deleted.
    template <class Window, class... Before>
    void OpenIn(Window*& slot, Before... before) {
        if (!slot) {
            auto* window = new Window(before..., m_, settings_, parent_);
            window->message = message_;
            window->edited = [this] { MemoryEdited(); };
            auto forget = [this, window, &slot] {
                if (slot != window) return;
                slot = nullptr;
                UpdateHooks();
            };
            window->closed = forget;
            connect(window, &QObject::destroyed, this, forget);
            slot = window;
        }
        Opened(slot);
    }
    void Opened(QWidget* window);
    // An entry box wrote memory: the other memory windows show it at once.
    void MemoryEdited();
    void UpdateHooks();

    Machine& m_;
    AccessHooks& hooks_;
    SettingsStore& settings_;
    std::function<void(const std::string&)> message_;
    QWidget* parent_;
    std::array<MemoryEditorWindow*, 3> editors_{};
    IoPortsEditorWindow* ports_ = nullptr;
    VideoScreenWindow* video_ = nullptr;
    bool refreshEditors_ = true;
};

}  // namespace mb
