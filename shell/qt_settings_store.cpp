#include "qt_settings_store.h"

namespace mb {

QtSettingsStore::QtSettingsStore()
    : settings_(std::make_unique<QSettings>("Marrowgate Bench", "Marrowgate Bench")) {}

QtSettingsStore::QtSettingsStore(const QString& iniPath)
    : settings_(std::make_unique<QSettings>(iniPath, QSettings::IniFormat)) {}

// A backslash in a name addresses a sub-key.
QString QtSettingsStore::Key(const std::string& name) {
    QString key = QString::fromStdString(name);
    key.replace('\\', '/');
    return key;
}

std::string QtSettingsStore::GetSettingText(const std::string& name, const std::string& def) {
    const QString key = Key(name);
    if (!settings_->contains(key)) SetSettingText(name, def);
    return settings_->value(key).toString().left(255).toStdString();
}

int QtSettingsStore::GetSettingInt(const std::string& name, int def) {
    const QString key = Key(name);
    if (!settings_->contains(key)) SetSettingInt(name, def);
    return SettingInteger(settings_->value(key).toString().toStdString());
}

void QtSettingsStore::SetSettingText(const std::string& name, const std::string& value) {
    settings_->setValue(Key(name), QString::fromStdString(value));
    settings_->sync();
}

void QtSettingsStore::SetSettingInt(const std::string& name, int value) {
    settings_->setValue(Key(name), value);
    settings_->sync();
}

std::string QtSettingsStore::DumpSettings() {
    std::string out;
    for (const QString& key : settings_->allKeys()) {
        QString name = key;
        name.replace('/', '\\');
        out += name.toStdString() + "\t" + settings_->value(key).toString().toStdString() + "\r\n";
    }
    return out;
}

bool QtSettingsStore::DeleteAllSettings() {
    settings_->clear();
    settings_->sync();
    return settings_->status() == QSettings::NoError && settings_->allKeys().isEmpty();
}

int QtSettingsStore::DeleteLayoutSettings() {
    const QStringList groups = settings_->childGroups();
    for (const QString& g : groups) settings_->remove(g);
    settings_->sync();
    return static_cast<int>(groups.size());
}

}  // namespace mb
