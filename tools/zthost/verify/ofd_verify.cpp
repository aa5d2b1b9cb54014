#include "verify/ofd_verify.h"

#include <memory>

#include "crypto/openssl_digest.h"
#include "host/host_session.h"
#include "readers/der_values.h"
#include "readers/ofd_package.h"
#include "readers/ses_signature.h"
#include "readers/signed_data.h"
#include "services/sm3_digest.h"
#include "verify/signature_verify.h"

namespace {

// A digest named by a CheckMethod, made by OpenSSL; SM3 also through the
// library, whose answer the check reports beside OpenSSL's.
class ReferenceDigest {
public:
    static std::unique_ptr<ReferenceDigest> forMethod(HostSession& session, const QString& method) {
        const QString key = method.trimmed().toLower().remove(QLatin1Char('-'));
        if (key.isEmpty() || key == QLatin1String("sm3") || key == QLatin1String("1.2.156.10197.1.401"))
            return std::unique_ptr<ReferenceDigest>(new ReferenceDigest(EVP_sm3(), &session));
        if (key == QLatin1String("sha1") || key == QLatin1String("1.3.14.3.2.26"))
            return std::unique_ptr<ReferenceDigest>(new ReferenceDigest(EVP_sha1(), nullptr));
        if (key == QLatin1String("sha256") || key == QLatin1String("2.16.840.1.101.3.4.2.1"))
            return std::unique_ptr<ReferenceDigest>(new ReferenceDigest(EVP_sha256(), nullptr));
        return nullptr;
    }
    void update(const char* data, int size) {
        if (library_)
            library_->update(data, size);
        strict_.update(data, size);
    }
    // Whether the digest equals `expected`, by the library (NotAsked but for
    // SM3) and by OpenSSL.
    Check compare(const QByteArray& expected, const QString& name, const QString& problem) {
        Check check = sm3Check(CheckScope::Document, name, library_ && library_->finish() == expected,
                               strict_.finish() == expected, problem);
        if (!library_)
            check.library = Answer::NotAsked;
        return check;
    }

private:
    ReferenceDigest(const EVP_MD* md, HostSession* session)
        : library_(session != nullptr ? new Sm3Stream(session->library()) : nullptr), strict_(md) {}
    std::unique_ptr<Sm3Stream> library_;
    OpenSslDigest strict_;
};

class Verifier {
public:
    Verifier(HostSession& session, const OfdPackage& package, const Authorities& authorities)
        : session_(session), package_(package), authorities_(authorities) {}

    SignatureVerdict verify(const OfdDocument& document, const OfdSignatureEntry& entry) {
        SignatureVerdict verdict;
        verdict.document = document.signaturesPath;
        verdict.id = entry.id;
        verdict.type = entry.type;
        try {
            verifyEntry(document, entry, &verdict);
        } catch (const FormatError& error) {
            verdict.fail(CheckScope::Signature, QStringLiteral("signature"), error.message);
        }
        return verdict;
    }

private:
    void verifyEntry(const OfdDocument& document, const OfdSignatureEntry& entry, SignatureVerdict* verdict) {
        if (entry.path.isEmpty())
            throw FormatError{QStringLiteral("the signature's BaseLoc %1 is not in the package").arg(entry.location)};
        const QByteArray xml = package_.zip().read(entry.path, kMaxOfdPartSize);
        const OfdSignatureFile file = package_.signatureFile(entry.path, xml);
        checkReferences(file, verdict);
        checkDocumentRoot(document, file, verdict);
        if (file.signedValuePath.isEmpty())
            throw FormatError{QStringLiteral("the SignedValue %1 is not in the package").arg(file.signedValueLocation)};
        const QByteArray value = package_.zip().read(file.signedValuePath, kMaxOfdPartSize);
        const SignedBytes signedBytes{xml, entry.path};
        if (entry.type == QLatin1String("Seal")) {
            verifySesSignature(session_, readSesSignature(ByteView::of(value)), &signedBytes, QByteArray(), authorities_,
                               verdict);
        } else if (entry.type == QLatin1String("Sign")) {
            const QDateTime at = der::timeFromText(file.signatureDateTime.toLatin1());
            verifySignedData(session_, readSignedData(ByteView::of(value)), signedBytes, at, authorities_, verdict);
        } else {
            throw FormatError{QStringLiteral("unknown signature type %1 (neither Seal nor Sign)").arg(entry.type)};
        }
    }

    void checkReferences(const OfdSignatureFile& file, SignatureVerdict* verdict) {
        if (file.references.empty())
            verdict->fail(CheckScope::Document, QStringLiteral("references"), QStringLiteral("the signature covers no file"));
        if (file.checkMethod.isEmpty())
            verdict->notes << QStringLiteral("no CheckMethod given; SM3 assumed");
        for (const OfdReference& reference : file.references) {
            ++verdict->referencesChecked;
            const Check check = referenceCheck(file.checkMethod, reference);
            verdict->add(check);
            if (check.failed())
                ++verdict->referencesFailed;
        }
    }

    // OFD.xml is not signed: pointed at another Document.xml it would show
    // other pages beside intact signatures. The one it points at must be
    // among the signed files.
    static void checkDocumentRoot(const OfdDocument& document, const OfdSignatureFile& file, SignatureVerdict* verdict) {
        const QString name = QStringLiteral("document root signed");
        for (const OfdReference& reference : file.references) {
            if (!document.rootPath.isEmpty() && reference.path == document.rootPath) {
                verdict->add(CheckScope::Document, name, true);
                return;
            }
        }
        verdict->fail(CheckScope::Document, name,
                      document.rootPath.isEmpty()
                          ? QStringLiteral("OFD.xml names no document (DocRoot) in the package for these signatures")
                          : QStringLiteral("the signature does not cover %1, the document OFD.xml shows (DocRoot)")
                                .arg(document.rootPath));
    }

    // Whether the file's digest equals its CheckValue.
    Check referenceCheck(const QString& method, const OfdReference& reference) {
        const QString name = QStringLiteral("reference %1").arg(reference.fileRef);
        const auto failed = [&](const QString& problem) {
            Check check = sm3Check(CheckScope::Document, name, false, false, problem);
            check.library = Answer::NotAsked;
            return check;
        };
        std::unique_ptr<ReferenceDigest> digest = ReferenceDigest::forMethod(session_, method);
        if (!digest)
            return failed(QStringLiteral("unknown CheckMethod %1").arg(method));
        if (reference.path.isEmpty())
            return failed(QStringLiteral("the signed file %1 is not in the package").arg(reference.fileRef));
        if (!reference.checkValueReadable)
            return failed(QStringLiteral("the CheckValue of %1 is not Base64").arg(reference.fileRef));
        try {
            const qint64 budget = kMaxReferencedTotal - referencedBytes_;
            referencedBytes_ += package_.zip().readChunks(reference.path, qMin(kMaxReferencedSize, budget),
                                                          [&](const char* data, int size) { digest->update(data, size); });
        } catch (const FormatError& error) {
            return failed(error.message);
        }
        return digest->compare(reference.checkValue, name,
                               QStringLiteral("%1 was changed after signing (its digest is not the CheckValue)").arg(reference.path));
    }

    HostSession& session_;
    const OfdPackage& package_;
    const Authorities& authorities_;
    qint64 referencedBytes_ = 0;
};

}  // namespace

bool OfdVerdict::valid() const {
    if (!problems.isEmpty() || signatures.empty())
        return false;
    for (const SignatureVerdict& signature : signatures) {
        if (!signature.valid())
            return false;
    }
    return true;
}

Report OfdVerdict::toReport(const QString& file) const {
    Report report = Report::object();
    report.set("file", file);
    report.set("valid", valid());
    Report list = Report::array();
    for (const SignatureVerdict& signature : signatures)
        list.append(signature.toReport());
    report.set("signatures", list);
    Report problemList = Report::array();
    for (const QString& problem : problems)
        problemList.append(Report::text(problem));
    report.set("problems", problemList);
    return report;
}

OfdVerdict verifyOfd(HostSession& session, const QByteArray& bytes, const Authorities& authorities) {
    OfdVerdict verdict;
    try {
        const OfdPackage package(bytes);
        Verifier verifier(session, package, authorities);
        const std::vector<OfdDocument> documents = package.documents();
        for (const OfdDocument& document : documents) {
            // A reader may show an unsigned document beside (or before) the signed one.
            if (documents.size() > 1 && document.signatures.empty())
                verdict.problems << QStringLiteral("document %1 (%2) carries no signatures")
                                        .arg(document.index).arg(document.rootLocation);
            for (const OfdSignatureEntry& entry : document.signatures)
                verdict.signatures.push_back(verifier.verify(document, entry));
        }
    } catch (const FormatError& error) {
        verdict.problems << error.message;
    }
    if (verdict.problems.isEmpty() && verdict.signatures.empty())
        verdict.problems << QStringLiteral("the document carries no signatures");
    return verdict;
}
