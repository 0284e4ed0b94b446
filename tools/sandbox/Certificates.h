// Keys and certificates of the sandbox server: a private certificate authority, the server's certificate, and
// spoiled ones for TLS faults. The authority and the server's pair are kept in a folder, so that clients need
// to trust it only once.
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>
#include <vector>

namespace velto::sandbox {

struct OpenSslDeleter {
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};

struct Identity {
  std::unique_ptr<X509, OpenSslDeleter> certificate;
  std::unique_ptr<EVP_PKEY, OpenSslDeleter> key;
};

struct CertificateWish {
  std::string commonName = {};
  std::vector<std::string> dnsNames = {};
  std::vector<std::string> addresses = {};  // IPv4 or IPv6, as text
  long validFromDays = -1;                  // relative to now
  long validToDays = 397;
  bool authority = false;
};

// Makes a P-256 key and a certificate for it, signed by the issuer or, without one, by itself. Throws Error.
Identity makeIdentity(const CertificateWish& wish, const Identity* issuer);

struct Certificates {
  Identity authority;
  Identity server;
  std::string caFile;
};

// Reads ca.pem, ca.key, server.pem and server.key from the folder, making it first if need be. What is
// missing, damaged, within a day of its end, or made for other names is made anew. Safe against other
// processes doing the same. Throws Error.
Certificates loadOrMakeCertificates(const std::string& folder, const std::vector<std::string>& dnsNames);

}  // namespace velto::sandbox
