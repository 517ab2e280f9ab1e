#include "app/ini_settings_store.h"

#include <QSettings>
#include <QString>

#include "app/text_format.h"

namespace sb {

namespace {

QString qtext(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

QString fullKey(std::string_view section, std::string_view key) {
    return qtext(section) + QLatin1Char('/') + qtext(key);
}

}  // namespace

ini_settings_store::ini_settings_store()
    : settings_(std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Varnak"),
                                            QStringLiteral("Soilbench"))) {}

ini_settings_store::ini_settings_store(const std::string& path)
    : settings_(std::make_unique<QSettings>(QString::fromStdString(path), QSettings::IniFormat)) {}

ini_settings_store::~ini_settings_store() = default;

std::string ini_settings_store::fileName() const { return settings_->fileName().toStdString(); }

bool ini_settings_store::readInt(std::string_view section, std::string_view key, long long& value) {
    QVariant stored = settings_->value(fullKey(section, key));
    if (!stored.isValid()) return false;
    bool ok = false;
    long long read = stored.toString().trimmed().toLongLong(&ok);
    if (ok) value = read;
    return ok;
}

bool ini_settings_store::readString(std::string_view section, std::string_view key, std::string& value) {
    QVariant stored = settings_->value(fullKey(section, key));
    if (!stored.isValid()) return false;
    // A value holding a comma reads back as a list; join it again.
    if (stored.typeId() == QMetaType::QStringList) value = stored.toStringList().join(QLatin1Char(',')).toStdString();
    else value = stored.toString().toStdString();
    return true;
}

void ini_settings_store::writeInt(std::string_view section, std::string_view key, long long value) {
    settings_->setValue(fullKey(section, key), value);
}

void ini_settings_store::writeString(std::string_view section, std::string_view key, std::string_view value) {
    settings_->setValue(fullKey(section, key), qtext(value));
}

void ini_settings_store::remove(std::string_view section, std::string_view key) {
    settings_->remove(fullKey(section, key));
}

bool ini_settings_store::flush(message_sink& errors) {
    settings_->sync();
    if (settings_->status() == QSettings::NoError) return true;
    errors.errorf("ERROR, unable to save the settings to \"%s\"\n", fileName().c_str());
    return false;
}

}  // namespace sb
