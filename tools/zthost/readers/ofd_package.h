// The signature side of an OFD package: OFD.xml -> each DocBody's
// Signatures.xml -> every Signature entry -> its Signature.xml, read with
// QXmlStreamReader by local element names (the namespace prefix varies).
// Paths are resolved as OFD does: absolute from the package root when they
// start with "/", otherwise relative to the referring file's folder, and
// failing that from the root (producers write root paths without the "/");
// a path that names a file both ways is refused as ambiguous.
// Case is kept as given; a path that climbs above the root is refused.
#ifndef ZTHOST_READERS_OFD_PACKAGE_H
#define ZTHOST_READERS_OFD_PACKAGE_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

#include "readers/zip_package.h"
#include "readers/format_error.h"

// Bounds on what one package may make zthost read and follow.
constexpr qint64 kMaxOfdPartSize = qint64(16) * 1024 * 1024;          // XML, signed values, seals
constexpr qint64 kMaxReferencedSize = qint64(1024) * 1024 * 1024;     // one referenced file
constexpr qint64 kMaxReferencedTotal = qint64(4) * 1024 * 1024 * 1024;  // all of them together
constexpr int kMaxDocuments = 64;
constexpr int kMaxSignatures = 1000;
constexpr int kMaxReferences = 10000;

// "a/./b/../c" -> "a/c", "\" read as "/", no leading "/". Throws FormatError
// for a path that leaves the package.
QString normalisePackagePath(const QString& path);
// The folder of a package path ("Doc_0/Signs" for "Doc_0/Signs/Signatures.xml").
QString packageFolder(const QString& path);
// Where `location`, written in a file of `folder`, may point, in the order
// they are tried.
QStringList packageCandidates(const QString& folder, const QString& location);

struct OfdSignatureEntry {
    QString id;
    QString type;      // "Seal" or "Sign"
    QString location;  // BaseLoc as written
    QString path;      // resolved; empty when no candidate exists
};

struct OfdDocument {
    int index = 0;               // DocBody number, from 0
    QString rootLocation;        // DocRoot as written (the Document.xml shown)
    QString rootPath;            // resolved; empty when absent
    QString signaturesLocation;  // as written in OFD.xml; empty without signatures
    QString signaturesPath;      // resolved
    std::vector<OfdSignatureEntry> signatures;
};

struct OfdReference {
    QString fileRef;     // as written
    QString path;        // resolved; empty when no candidate exists
    QByteArray checkValue;
    bool checkValueReadable = true;  // false when CheckValue is no Base64
};

struct OfdSignatureFile {
    QString checkMethod;  // as written (may be empty)
    QString signatureMethod;
    QString signatureDateTime;
    QString provider;
    std::vector<OfdReference> references;
    QString signedValueLocation;
    QString signedValuePath;  // resolved; empty when no candidate exists
    QString sealLocation;     // SignedInfo/Seal/BaseLoc, if any
};

class OfdPackage {
public:
    // `bytes` must outlive the package. Throws FormatError.
    explicit OfdPackage(const QByteArray& bytes);

    // OFD.xml and every Signatures.xml it names. Throws FormatError for a
    // missing or malformed file on that path.
    std::vector<OfdDocument> documents() const;
    // One Signature.xml (its bytes are read by the caller with read()).
    OfdSignatureFile signatureFile(const QString& path, const QByteArray& xml) const;

    // The candidate that exists, or empty text. Throws FormatError when two
    // exist: which file the path means would be a guess.
    QString resolve(const QString& folder, const QString& location) const;
    const ZipPackage& zip() const { return zip_; }

private:
    ZipPackage zip_;
};

#endif
