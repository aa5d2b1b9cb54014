#include "readers/ofd_package.h"

#include <QXmlStreamReader>

#include "readers/format_error.h"

namespace {

const char kRootFile[] = "OFD.xml";

// Element text and attributes by local name; the reader must be well formed.
class XmlFile {
public:
    XmlFile(const QByteArray& xml, QString name) : reader_(xml), name_(std::move(name)) {}

    // The next start element, or false at the end. Throws on malformed XML.
    bool nextElement() {
        while (!reader_.atEnd()) {
            if (reader_.readNext() == QXmlStreamReader::StartElement)
                return true;
        }
        if (reader_.hasError()) {
            throw FormatError{QStringLiteral("%1 is not well-formed XML (line %2, column %3: %4)")
                                  .arg(name_).arg(reader_.lineNumber()).arg(reader_.columnNumber())
                                  .arg(reader_.errorString())};
        }
        return false;
    }
    bool is(const char* localName) const { return reader_.name() == QLatin1String(localName); }
    QString attribute(const char* name) const {
        return reader_.attributes().value(QLatin1String(name)).toString().trimmed();
    }
    QString text() {
        const QString value = reader_.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
        if (reader_.hasError())
            nextElement();  // reports the error
        return value;
    }
private:
    QXmlStreamReader reader_;
    QString name_;
};

template <typename List>
void checkCount(const List& list, int limit, const QString& what) {
    if (int(list.size()) >= limit)
        throw FormatError{QStringLiteral("more than %1 %2").arg(limit).arg(what)};
}

// A reader might take either of two DocRoot (or Signatures) elements: the
// one verified must be the only one.
void setOnce(const OfdDocument& document, const char* element, const QString& value, QString* field) {
    if (!field->isEmpty())
        throw FormatError{QStringLiteral("document %1 names more than one %2").arg(document.index).arg(QLatin1String(element))};
    *field = value;
}

QByteArray decodeCheckValue(const QString& text, bool* readable) {
    QByteArray compact = text.toLatin1();
    compact.replace(' ', "").replace('\n', "").replace('\r', "").replace('\t', "");
    const auto decoded = QByteArray::fromBase64Encoding(compact, QByteArray::AbortOnBase64DecodingErrors);
    *readable = bool(decoded) && !compact.isEmpty();
    return decoded ? *decoded : QByteArray();
}

}  // namespace

QString normalisePackagePath(const QString& path) {
    QString unified = path.trimmed();
    unified.replace(QLatin1Char('\\'), QLatin1Char('/'));
    QStringList parts;
    for (const QString& part : unified.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (part == QLatin1String("."))
            continue;
        if (part == QLatin1String("..")) {
            if (parts.isEmpty())
                throw FormatError{QStringLiteral("the path %1 leaves the package").arg(path)};
            parts.removeLast();
            continue;
        }
        parts << part;
    }
    return parts.join(QLatin1Char('/'));
}

QString packageFolder(const QString& path) {
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? QString() : path.left(slash);
}

QStringList packageCandidates(const QString& folder, const QString& location) {
    const QString trimmed = location.trimmed();
    if (trimmed.startsWith(QLatin1Char('/')) || trimmed.startsWith(QLatin1Char('\\')) || folder.isEmpty())
        return {normalisePackagePath(trimmed)};
    QStringList candidates{normalisePackagePath(folder + QLatin1Char('/') + trimmed)};
    try {
        const QString fromRoot = normalisePackagePath(trimmed);
        if (!candidates.contains(fromRoot))
            candidates << fromRoot;
    } catch (const FormatError&) {
        // "../x" from a folder is fine; from the root it is no candidate
    }
    return candidates;
}

OfdPackage::OfdPackage(const QByteArray& bytes) : zip_(bytes) {}

QString OfdPackage::resolve(const QString& folder, const QString& location) const {
    QStringList found;
    for (const QString& candidate : packageCandidates(folder, location)) {
        if (zip_.contains(candidate))
            found << candidate;
    }
    if (found.size() > 1)
        throw FormatError{QStringLiteral("the path %1 is ambiguous: both %2 and %3 are in the package")
                              .arg(location, found.at(0), found.at(1))};
    return found.value(0);
}

std::vector<OfdDocument> OfdPackage::documents() const {
    if (!zip_.contains(QLatin1String(kRootFile)))
        throw FormatError{QStringLiteral("no OFD.xml: not an OFD package")};
    XmlFile root(zip_.read(QLatin1String(kRootFile), kMaxOfdPartSize), QLatin1String(kRootFile));
    std::vector<OfdDocument> documents;
    while (root.nextElement()) {
        if (root.is("DocBody")) {
            checkCount(documents, kMaxDocuments, QStringLiteral("documents"));
            OfdDocument document;
            document.index = int(documents.size());
            documents.push_back(document);
        } else if (root.is("DocRoot") && !documents.empty()) {
            setOnce(documents.back(), "DocRoot", root.text(), &documents.back().rootLocation);
        } else if (root.is("Signatures") && !documents.empty()) {
            setOnce(documents.back(), "Signatures", root.text(), &documents.back().signaturesLocation);
        }
    }
    for (OfdDocument& document : documents) {
        if (!document.rootLocation.isEmpty())
            document.rootPath = resolve(QString(), document.rootLocation);
        if (document.signaturesLocation.isEmpty())
            continue;
        document.signaturesPath = resolve(QString(), document.signaturesLocation);
        if (document.signaturesPath.isEmpty())
            throw FormatError{QStringLiteral("OFD.xml names %1, which is not in the package").arg(document.signaturesLocation)};
        XmlFile list(zip_.read(document.signaturesPath, kMaxOfdPartSize), document.signaturesPath);
        const QString folder = packageFolder(document.signaturesPath);
        while (list.nextElement()) {
            if (!list.is("Signature"))
                continue;
            checkCount(document.signatures, kMaxSignatures, QStringLiteral("signatures in %1").arg(document.signaturesPath));
            OfdSignatureEntry entry;
            entry.id = list.attribute("ID");
            entry.type = list.attribute("Type");
            if (entry.type.isEmpty())
                entry.type = QStringLiteral("Seal");  // the default OFD gives the attribute
            entry.location = list.attribute("BaseLoc");
            entry.path = resolve(folder, entry.location);
            document.signatures.push_back(entry);
        }
    }
    return documents;
}

OfdSignatureFile OfdPackage::signatureFile(const QString& path, const QByteArray& xml) const {
    XmlFile file(xml, path);
    const QString folder = packageFolder(path);
    OfdSignatureFile signature;
    while (file.nextElement()) {
        if (file.is("References")) {
            signature.checkMethod = file.attribute("CheckMethod");
        } else if (file.is("Reference")) {
            checkCount(signature.references, kMaxReferences, QStringLiteral("references in %1").arg(path));
            OfdReference reference;
            reference.fileRef = file.attribute("FileRef");
            reference.path = resolve(folder, reference.fileRef);
            signature.references.push_back(reference);
        } else if (file.is("CheckValue") && !signature.references.empty()) {
            OfdReference& reference = signature.references.back();
            reference.checkValue = decodeCheckValue(file.text(), &reference.checkValueReadable);
        } else if (file.is("SignatureMethod")) {
            signature.signatureMethod = file.text();
        } else if (file.is("SignatureDateTime")) {
            signature.signatureDateTime = file.text();
        } else if (file.is("Provider")) {
            signature.provider = file.attribute("ProviderName");
        } else if (file.is("BaseLoc")) {
            signature.sealLocation = file.text();
        } else if (file.is("SignedValue")) {
            signature.signedValueLocation = file.text();
            signature.signedValuePath = resolve(folder, signature.signedValueLocation);
        }
    }
    return signature;
}
