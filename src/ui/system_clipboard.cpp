#include "ui/system_clipboard.h"

#include <QClipboard>
#include <QMimeData>

#include "records/record_clipboard.h"

namespace sb {

void putRecordItems(QClipboard& clipboard, const std::string& idItem, const std::string& text) {
    auto* data = new QMimeData;
    data->setData(QString::fromLatin1(record_clipboard::kMimeType),
                  QByteArray(idItem.data(), static_cast<qsizetype>(idItem.size())));
    data->setText(QString::fromStdString(text));
    clipboard.setMimeData(data);
}

std::optional<std::string> takeRecordIdItem(const QClipboard& clipboard) {
    const QMimeData* data = clipboard.mimeData();
    const QString type = QString::fromLatin1(record_clipboard::kMimeType);
    if (!data || !data->hasFormat(type)) return std::nullopt;
    const QByteArray bytes = data->data(type);
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

}  // namespace sb
