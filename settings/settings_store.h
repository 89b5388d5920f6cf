// The persistent store of options: flat named text and integer values under one
// root. A read with a default writes the default back when the value is missing.
#pragma once

#include <map>
#include <string>

namespace mb {

class SettingsStore {
  public:
    virtual ~SettingsStore() = default;
    virtual std::string GetSettingText(const std::string& name, const std::string& def) = 0;
    virtual int GetSettingInt(const std::string& name, int def) = 0;
    virtual void SetSettingText(const std::string& name, const std::string& value) = 0;
    virtual void SetSettingInt(const std::string& name, int value) = 0;
    // Every value as "name<TAB>value\r\n", for bug reports.
    virtual std::string DumpSettings() = 0;
    // Removes the whole store; false when that failed.
    virtual bool DeleteAllSettings() = 0;
    // Removes the sub-keys directly under the root (names holding a backslash
    // address them) and returns how many there were; plain values stay.
    virtual int DeleteLayoutSettings() = 0;
};

// Store held in memory, for tests and the command-line tools.
class MemorySettingsStore : public SettingsStore {
  public:
    std::string GetSettingText(const std::string& name, const std::string& def) override;
    int GetSettingInt(const std::string& name, int def) override;
    void SetSettingText(const std::string& name, const std::string& value) override;
    void SetSettingInt(const std::string& name, int value) override;
    std::string DumpSettings() override;
    bool DeleteAllSettings() override;
    int DeleteLayoutSettings() override;

    bool Contains(const std::string& name) const { return values_.count(name) != 0; }

  private:
    std::map<std::string, std::string> values_;
};

// Plain numeric reading of a text value: leading number, anything unreadable is 0.
double SettingNumber(const std::string& text);

}  // namespace mb
