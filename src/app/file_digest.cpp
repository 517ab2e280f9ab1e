#include "app/file_digest.h"

#include <QCryptographicHash>
#include <fstream>

namespace sb {

sha256_digest::sha256_digest() : hash_(std::make_unique<QCryptographicHash>(QCryptographicHash::Sha256)) {}
sha256_digest::~sha256_digest() = default;

void sha256_digest::add(std::string_view bytes) {
    hash_->addData(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
}

bool sha256_digest::addFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    char piece[64 * 1024];
    while (in.read(piece, sizeof piece) || in.gcount() > 0)
        add(std::string_view(piece, static_cast<size_t>(in.gcount())));
    return in.eof();
}

std::string sha256_digest::hex() const { return hash_->result().toHex().toStdString(); }

std::string sha256OfFile(const std::string& path) {
    sha256_digest digest;
    return digest.addFile(path) ? digest.hex() : "";
}

}  // namespace sb
