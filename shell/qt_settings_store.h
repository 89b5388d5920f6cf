// The settings store on QSettings: organisation "Marrowgate Bench", every write
// stored at once.
#pragma once

#include <QSettings>
#include <memory>

#include "settings/settings_store.h"

namespace mb {

class QtSettingsStore : public SettingsStore {
  public:
    QtSettingsStore();                                 // the user's store
    explicit QtSettingsStore(const QString& iniPath);  // a file of its own (tests)

    std::string GetSettingText(const std::string& name, const std::string& def) override;
    int GetSettingInt(const std::string& name, int def) override;
    void SetSettingText(const std::string& name, const std::string& value) override;
    void SetSettingInt(const std::string& name, int value) override;

    std::string DumpSettings() override;
    bool DeleteAllSettings() override;
    int DeleteLayoutSettings() override;

  private:
    static QString Key(const std::string& name);
    std::unique_ptr<QSettings> settings_;
};

}  // namespace mb
