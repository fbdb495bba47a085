#include "tests/support/TestAuthority.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace Tessel::Test {

namespace {

void require(bool condition, const char* what)
{
    if (!condition) throw std::runtime_error(std::string("test authority: ") + what);
}

struct File {
    explicit File(const std::string& path, const char* mode)
        : handle(std::fopen(path.c_str(), mode))
    {
        require(handle, "cannot open a file");
    }
    ~File() { std::fclose(handle); }
    FILE* handle;
};

Identity save(const std::filesystem::path& path, X509* certificate, EVP_PKEY* key)
{
    Identity identity {path.string() + ".crt", path.string() + ".key"};
    PEM_write_X509(File(identity.certificateFile, "w").handle, certificate);
    PEM_write_PrivateKey(
        File(identity.keyFile, "w").handle, key, nullptr, nullptr, 0, nullptr, nullptr);
    return identity;
}

} // namespace

std::shared_ptr<X509> TestAuthority::certify(
    EVP_PKEY* key, const char* name, int kind, const std::string& extension, bool isExpired)
{
    const std::shared_ptr<X509> certificate(X509_new(), X509_free);
    auto* const issuer = certificate_ ? certificate_.get() : certificate.get();
    X509_set_version(certificate.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), ++issued_);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -86'400);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), isExpired ? -3'600 : 86'400);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_ASC,
        reinterpret_cast<const unsigned char*>(name), -1, -1, 0);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer));
    X509_set_pubkey(certificate.get(), key);

    auto* const added = X509V3_EXT_conf_nid(nullptr, nullptr, kind, extension.c_str());
    require(added, "bad extension");
    X509_add_ext(certificate.get(), added, -1);
    X509_EXTENSION_free(added);
    require(X509_sign(certificate.get(), key_.get(), EVP_sha256()) > 0, "cannot sign");
    return certificate;
}

TestAuthority::TestAuthority()
    : key_(EVP_EC_gen("P-256"), EVP_PKEY_free)
{
    certificate_ = certify(
        key_.get(), "Throw-away authority", NID_basic_constraints, "critical,CA:TRUE", false);
    file_ = save(directory_.path() / "authority", certificate_.get(), key_.get()).certificateFile;

    char hashed[16];
    std::snprintf(hashed, sizeof hashed, "%08lx.0", X509_subject_name_hash(certificate_.get()));
    std::filesystem::create_directory(directory());
    std::filesystem::copy_file(file(), std::filesystem::path(directory()) / hashed);
}

Identity TestAuthority::issue(const std::vector<std::string>& names, bool isExpired)
{
    std::string list;
    for (const auto& name : names)
        list += (list.empty() ? "" : ",") + name;
    const std::shared_ptr<EVP_PKEY> key(EVP_EC_gen("P-256"), EVP_PKEY_free);
    const auto certificate = certify(key.get(), "test", NID_subject_alt_name, list, isExpired);
    return save(directory_.path() / std::to_string(issued_), certificate.get(), key.get());
}

} // namespace Tessel::Test
