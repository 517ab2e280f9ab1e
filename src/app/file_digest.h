#pragma once
// SHA-256 digests as lower-case hexadecimal text: which model executable ran
// and which input files it read are kept with every run.
#include <memory>
#include <string>
#include <string_view>

class QCryptographicHash;

namespace sb {

class sha256_digest {
public:
    sha256_digest();
    ~sha256_digest();
    sha256_digest(const sha256_digest&) = delete;
    sha256_digest& operator=(const sha256_digest&) = delete;

    void add(std::string_view bytes);
    // The whole file, read in pieces; false when it cannot be read.
    bool addFile(const std::string& path);
    // 64 hexadecimal digits.
    std::string hex() const;

private:
    std::unique_ptr<QCryptographicHash> hash_;
};

// The digest of one file; "" when it cannot be read.
std::string sha256OfFile(const std::string& path);

}  // namespace sb
