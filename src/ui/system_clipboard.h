#pragma once
// Puts the two clipboard items of a control record (the private "SoilbenchControl"
// ID item and the record text) on the system clipboard and takes the ID item back.
#include <optional>
#include <string>

class QClipboard;

namespace sb {

void putRecordItems(QClipboard& clipboard, const std::string& idItem, const std::string& text);
// Empty when the clipboard holds no item in the private format.
std::optional<std::string> takeRecordIdItem(const QClipboard& clipboard);

}  // namespace sb
