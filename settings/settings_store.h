// The persistent store of options: flat named text and integer values under one
// root. A read with a default writes the default back when the value is missing.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

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

// Plain numeric reading of a text value: the decimal number it begins with
// (blanks in front allowed), anything unreadable is 0.
double SettingNumber(const std::string& text);

// SettingNumber as a 32-bit integer value: the fraction dropped, a value beyond
// the range held at its end.
int SettingInteger(const std::string& text);

// A number typed or given by a user: the whole text (blanks around allowed) is
// one decimal number, an optional sign, digits with an optional fraction and
// an optional exponent. "nan", "inf" and hexadecimal forms such as "0x10" are
// not decimal and give nothing, as does a value beyond the range of a double.
std::optional<double> ReadDecimal(std::string_view text);

// Whether v lies in [low, high]; false for NaN.
inline bool InRange(double v, double low, double high) {
    return v >= low && v <= high;
}

}  // namespace mb
