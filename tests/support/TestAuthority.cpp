#include "support/TestAuthority.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace Tessel::Test {

namespace {

template <class Type, void (*release)(Type*)> struct Release {
    void operator()(Type* object) const { release(object); }
};
using Certificate = std::unique_ptr<X509, Release<X509, X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, Release<EVP_PKEY, EVP_PKEY_free>>;

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

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    auto* const extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
    require(extension, "bad extension");
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

Certificate makeCertificate(EVP_PKEY* key, const std::string& name, int serial, bool isExpired)
{
    Certificate certificate(X509_new());
    X509_set_version(certificate.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -86'400);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), isExpired ? -3'600 : 86'400);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_ASC,
        reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    X509_set_pubkey(certificate.get(), key);
    return certificate;
}

Identity save(const std::filesystem::path& path, X509* certificate, EVP_PKEY* key)
{
    Identity identity {path.string() + ".crt", path.string() + ".key"};
    PEM_write_X509(File(identity.certificateFile, "w").handle, certificate);
    PEM_write_PrivateKey(
        File(identity.keyFile, "w").handle, key, nullptr, nullptr, 0, nullptr, nullptr);
    return identity;
}

} // namespace

TestAuthority::TestAuthority()
{
    auto pattern = (std::filesystem::temp_directory_path() / "tessel-authority-XXXXXX").string();
    require(mkdtemp(pattern.data()), "no temporary directory");
    directory_ = pattern;

    const Key key(EVP_EC_gen("P-256"));
    require(key != nullptr, "no key");
    const auto certificate = makeCertificate(key.get(), "Throw-away authority", 1, false);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    addExtension(certificate.get(), certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate.get(), certificate.get(), NID_subject_key_identifier, "hash");
    require(X509_sign(certificate.get(), key.get(), EVP_sha256()) > 0, "cannot sign");
    authority_ = save(directory_ / "authority", certificate.get(), key.get());

    char hashed[16];
    std::snprintf(hashed, sizeof hashed, "%08lx.0", X509_subject_name_hash(certificate.get()));
    std::filesystem::create_directory(directory());
    std::filesystem::copy_file(file(), std::filesystem::path(directory()) / hashed);
}

TestAuthority::~TestAuthority()
{
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

Identity TestAuthority::issue(const std::vector<std::string>& names, bool isExpired)
{
    const Certificate issuer(
        PEM_read_X509(File(authority_.certificateFile, "r").handle, nullptr, nullptr, nullptr));
    const Key issuerKey(
        PEM_read_PrivateKey(File(authority_.keyFile, "r").handle, nullptr, nullptr, nullptr));
    require(issuer && issuerKey, "cannot read back");

    const Key key(EVP_EC_gen("P-256"));
    const auto certificate = makeCertificate(key.get(), "test", ++issued_ + 1, isExpired);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer.get()));
    std::string list;
    for (const auto& name : names)
        list += (list.empty() ? "" : ",") + name;
    addExtension(certificate.get(), issuer.get(), NID_subject_alt_name, list);
    require(X509_sign(certificate.get(), issuerKey.get(), EVP_sha256()) > 0, "cannot sign");
    return save(directory_ / std::to_string(issued_), certificate.get(), key.get());
}

} // namespace Tessel::Test
