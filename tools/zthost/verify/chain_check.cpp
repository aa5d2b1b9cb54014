#include "verify/chain_check.h"

#include <memory>

#include "crypto/certificate_facts.h"
#include "crypto/public_key.h"
#include "readers/certificate_fields.h"
#include "readers/der_values.h"
#include "readers/oid_names.h"
#include "verify/rsa_check.h"
#include "verify/sm2_check.h"

namespace {

const int kMaxPathLength = 16;
const char kCommonName[] = "2.5.4.3";
const char kRsaSignaturePrefix[] = "1.2.840.113549.1.1.";

// A certificate as both zthost's reader and OpenSSL read it.
struct Node {
    QByteArray der;
    CertificateFields fields;
    X509Ptr x509;
    CertificateFacts facts;
    QString subject;
    QString name;
};

std::unique_ptr<Node> readNode(const QByteArray& der, QString* problem) {
    auto node = std::make_unique<Node>();
    node->der = der;
    try {
        node->fields = readCertificateFields(ByteView::of(node->der));
    } catch (const FormatError& error) {
        *problem = error.message;
        return nullptr;
    }
    node->x509 = parseX509(node->der);
    if (!node->x509) {
        *problem = QStringLiteral("OpenSSL cannot read the certificate");
        return nullptr;
    }
    node->facts = certificateFacts(node->x509.get());
    node->subject = nameText(node->fields.subjectAttributes);
    const NameAttribute* commonName = lastAttribute(node->fields.subjectAttributes, kCommonName);
    node->name = commonName != nullptr ? commonName->text() : node->subject;
    return node;
}

QString quoted(const Node& node) {
    return QStringLiteral("'%1'").arg(node.name);
}

bool selfIssued(const Node& node) {
    return X509_NAME_cmp(X509_get_subject_name(node.x509.get()), X509_get_issuer_name(node.x509.get())) == 0;
}

bool issuedBy(const Node& child, const Node& issuer) {
    if (X509_NAME_cmp(X509_get_issuer_name(child.x509.get()), X509_get_subject_name(issuer.x509.get())) != 0)
        return false;
    const QByteArray& authorityKeyId = child.facts.authorityKeyId;
    const QByteArray& subjectKeyId = issuer.facts.subjectKeyId;
    return authorityKeyId.isEmpty() || subjectKeyId.isEmpty() || authorityKeyId == subjectKeyId;
}

// The digest an RSA signature algorithm names; empty when zthost does not know it.
QString rsaAlgorithmDigest(const QString& algorithm) {
    static const struct {
        const char* oid;
        const char* digest;
    } kDigests[] = {{"1.2.840.113549.1.1.5", "SHA-1"},   {"1.2.840.113549.1.1.11", "SHA-256"},
                    {"1.2.840.113549.1.1.12", "SHA-384"}, {"1.2.840.113549.1.1.13", "SHA-512"},
                    {"1.2.840.113549.1.1.14", "SHA-224"}, {"1.2.156.10197.1.504", "SM3"}};
    for (const auto& entry : kDigests) {
        if (algorithm == QLatin1String(entry.oid))
            return QLatin1String(entry.digest);
    }
    return QString();
}

bool isRsaSignature(const QString& algorithm) {
    return algorithm.startsWith(QLatin1String(kRsaSignaturePrefix)) || !rsaAlgorithmDigest(algorithm).isEmpty();
}

Check rsaSignatureCheck(HostSession& session, const QString& name, const Node& child, const Node& issuer) {
    const QString algorithm = child.fields.signatureAlgorithm;
    RsaCheckResult result = checkRsaSignature(session, CheckScope::Signature, name,
                                              child.fields.signatureValue.toByteArray(), issuer.der,
                                              child.fields.toBeSigned.toByteArray());
    const QString named = rsaAlgorithmDigest(algorithm);
    if (result.check.passed() && !named.isEmpty() && named != result.digestName) {
        result.check.strict = Answer::No;
        result.check.problem = QStringLiteral("the %1 signs with %2, its algorithm %3 names %4")
                                   .arg(name, result.digestName, oidWithName(algorithm), named);
    }
    return result.check;
}

Check signatureCheck(HostSession& session, const Node& child, const Node& issuer) {
    const QString name = QStringLiteral("signature on %1 by %2").arg(quoted(child), quoted(issuer));
    const QString algorithm = child.fields.signatureAlgorithm;
    if (algorithm == QLatin1String(oid::kSm2WithSm3)) {
        EvpPkeyPtr key(X509_get_pubkey(issuer.x509.get()));
        return checkSm2Der(session, CheckScope::Signature, name, child.fields.signatureValue.toByteArray(), key.get(),
                           child.fields.toBeSigned.toByteArray());
    }
    if (isRsaSignature(algorithm))
        return rsaSignatureCheck(session, name, child, issuer);
    Check check;
    check.name = name;
    check.strict = Answer::No;
    check.problem = QStringLiteral("%1 is signed with %2, neither SM2 with SM3 nor RSA").arg(quoted(child), oidWithName(algorithm));
    return check;
}

Check strictCheck(const QString& name, const QString& problem) {
    Check check;
    check.name = name;
    check.strict = answerOf(problem.isEmpty());
    check.problem = problem;
    return check;
}

Check validityCheck(const Node& node, const QDateTime& at) {
    const QDateTime& from = node.fields.notBefore;
    const QDateTime& to = node.fields.notAfter;
    const bool inside = from <= at && at <= to;
    return strictCheck(QStringLiteral("validity of %1").arg(quoted(node)),
                       inside ? QString()
                              : QStringLiteral("%1 is valid %2 .. %3; %4 is outside")
                                    .arg(quoted(node), isoTime(from), isoTime(to), isoTime(at)));
}

// Empty when `node` may issue the certificate below it; `below` counts the
// intermediates between it and the certificate checked.
QString authorityProblem(const Node& node, int below, bool root) {
    const CertificateFacts& facts = node.facts;
    if (!facts.extensionsReadable)
        return QStringLiteral("%1 has a malformed extension").arg(quoted(node));
    if (node.fields.version < 3) {
        if (!root)
            return QStringLiteral("%1 is a version-%2 certificate, which cannot be an intermediate")
                .arg(quoted(node)).arg(node.fields.version);
        return QString();  // a version-1 root, trusted as given
    }
    if (!facts.certificateAuthority)
        return QStringLiteral("%1 is no CA certificate (its basicConstraints do not set cA)").arg(quoted(node));
    if (!facts.mayCertSign)
        return QStringLiteral("%1's key usage does not allow signing certificates").arg(quoted(node));
    if (facts.pathLength >= 0 && below > facts.pathLength)
        return QStringLiteral("%1 allows %2 intermediate certificate(s) below it (pathLenConstraint), the path has %3")
            .arg(quoted(node)).arg(facts.pathLength).arg(below);
    return QString();
}

class ChainBuilder {
public:
    ChainBuilder(HostSession& session, ChainVerdict* verdict) : session_(session), verdict_(verdict) {}

    void build(const QByteArray& certificate, const std::vector<QByteArray>& authorities) {
        QString problem;
        leaf_ = readNode(certificate, &problem);
        if (!leaf_) {
            verdict_->problems << QStringLiteral("the certificate cannot be read: %1").arg(problem);
            return;
        }
        for (const QByteArray& der : authorities) {
            if (std::unique_ptr<Node> node = readNode(der, &problem))
                pool_.push_back(std::move(node));
            else
                verdict_->problems << QStringLiteral("a --ca certificate cannot be read: %1").arg(problem);
        }
        path_.push_back(leaf_.get());
        while (extend()) {
        }
        check();
    }

private:
    bool trusted(const Node& node) const {
        for (const auto& authority : pool_) {
            if (authority->der == node.der)
                return true;
        }
        return false;
    }

    bool inPath(const Node* node) const {
        for (const Node* member : path_) {
            if (member->der == node->der)
                return true;
        }
        return false;
    }

    // Adds the issuer of the last certificate; false when the path ends.
    bool extend() {
        const Node& current = *path_.back();
        if (selfIssued(current)) {
            verdict_->rootFound = trusted(current);
            if (!verdict_->rootFound)
                verdict_->problems << QStringLiteral("%1 is self-signed and not among the --ca certificates").arg(quoted(current));
            return false;
        }
        if (path_.size() >= size_t(kMaxPathLength)) {
            verdict_->problems << QStringLiteral("the path is longer than %1 certificates").arg(kMaxPathLength);
            return false;
        }
        const Node* chosen = nullptr;
        for (const auto& candidate : pool_) {
            if (inPath(candidate.get()) || !issuedBy(current, *candidate))
                continue;
            if (chosen == nullptr)
                chosen = candidate.get();
            if (signatureCheck(session_, current, *candidate).passed()) {
                chosen = candidate.get();
                break;
            }
        }
        if (chosen == nullptr) {
            verdict_->problems << QStringLiteral("no --ca certificate is the issuer of %1 (%2)")
                                      .arg(quoted(current), nameText(current.fields.issuerAttributes));
            return false;
        }
        path_.push_back(chosen);
        return true;
    }

    void check() {
        const int count = int(path_.size());
        for (int i = 0; i < count; ++i) {
            const Node& node = *path_[size_t(i)];
            const bool last = i + 1 == count;
            const bool root = last && verdict_->rootFound;
            const Node* issuer = !last ? path_[size_t(i + 1)] : root ? &node : nullptr;
            if (issuer != nullptr)
                verdict_->checks.push_back(signatureCheck(session_, node, *issuer));
            verdict_->checks.push_back(validityCheck(node, verdict_->at));
            if (i > 0)
                verdict_->checks.push_back(strictCheck(QStringLiteral("%1 may issue certificates").arg(quoted(node)),
                                                       authorityProblem(node, i - 1, root)));
            verdict_->path.push_back(ChainMember{node.subject, node.name, node.fields.notBefore, node.fields.notAfter,
                                                 i == 0 ? QStringLiteral("certificate")
                                                 : root ? QStringLiteral("root")
                                                        : QStringLiteral("intermediate")});
        }
    }

    HostSession& session_;
    ChainVerdict* verdict_;
    std::unique_ptr<Node> leaf_;
    std::vector<std::unique_ptr<Node>> pool_;
    std::vector<const Node*> path_;
};

}  // namespace

bool ChainVerdict::valid() const {
    return failures().isEmpty() && rootFound;
}

QStringList ChainVerdict::failures() const {
    QStringList list = problems;
    for (const Check& check : checks) {
        if (check.failed())
            list << check.problem;
    }
    return list;
}

QString ChainVerdict::pathText() const {
    QStringList names;
    for (const ChainMember& member : path)
        names << member.name;
    return names.join(QStringLiteral(" <- ")) + (rootFound ? QStringLiteral(" (root)") : QStringLiteral(" (no root)"));
}

Report ChainVerdict::toReport() const {
    Report report = Report::object();
    report.set("checked_at", isoTime(at));
    Report members = Report::array();
    for (const ChainMember& member : path) {
        members.append(Report::object()
                           .set("role", member.role)
                           .set("subject", member.subject)
                           .set("not_before", isoTime(member.notBefore))
                           .set("not_after", isoTime(member.notAfter)));
    }
    report.set("path", members);
    report.set("root_found", rootFound);
    Report checkList = Report::array();
    for (const Check& check : checks)
        checkList.append(checkReport(check));
    report.set("checks", checkList);
    Report failureList = Report::array();
    for (const QString& failure : failures())
        failureList.append(Report::text(failure));
    report.set("problems", failureList);
    report.set("valid", valid());
    return report;
}

QString ChainVerdict::toText() const {
    QString out = QStringLiteral("path:\n");
    int number = 0;
    for (const ChainMember& member : path) {
        out += QStringLiteral("  %1 %2 %3\n").arg(++number).arg(member.role, -13).arg(member.subject);
        out += QStringLiteral("%1valid %2 .. %3\n").arg(QString(18, QLatin1Char(' ')), isoTime(member.notBefore), isoTime(member.notAfter));
    }
    out += QStringLiteral("checked at: %1\n").arg(isoTime(at));
    for (const Check& check : checks) {
        out += QStringLiteral("%1: %2\n").arg(check.name, check.passed() ? QStringLiteral("yes") : QStringLiteral("NO"));
        if (check.disagrees())
            out += QStringLiteral("  disagreement: %1\n").arg(check.disagreement);
    }
    for (const QString& failure : failures())
        out += QStringLiteral("problem: %1\n").arg(failure);
    out += QStringLiteral("chain: %1\n").arg(valid() ? QStringLiteral("VALID") : QStringLiteral("NOT VALID"));
    return out;
}

ChainVerdict verifyChain(HostSession& session, const QByteArray& certificate,
                         const std::vector<QByteArray>& authorities, const QDateTime& at) {
    ChainVerdict verdict;
    verdict.at = at.toUTC();
    ChainBuilder(session, &verdict).build(certificate, authorities);
    return verdict;
}

void addChainCheck(HostSession& session, const QByteArray& certificate, const std::vector<QByteArray>& authorities,
                   const QDateTime& at, ChainOwner owner, SignatureVerdict* verdict) {
    const bool maker = owner == ChainOwner::SealMaker;
    const QString who = maker ? QStringLiteral("seal maker") : QStringLiteral("signer");
    const QString name = maker ? QStringLiteral("seal maker certificate chain") : QStringLiteral("certificate chain");
    if (authorities.empty()) {
        verdict->notes << QStringLiteral("the %1's certificate was not checked against any root (no --ca given)").arg(who);
        return;
    }
    const ChainVerdict chain = verifyChain(session, certificate, authorities, at.isValid() ? at : QDateTime::currentDateTimeUtc());
    Check check;
    check.scope = maker ? CheckScope::Seal : CheckScope::Signature;
    check.name = name;
    check.strict = answerOf(chain.valid());
    check.problem = QStringLiteral("the %1's certificate chain does not hold: %2").arg(who, chain.failures().join(QStringLiteral("; ")));
    verdict->add(check);
    verdict->notes << QStringLiteral("%1: %2, checked at %3").arg(name, chain.pathText(), isoTime(chain.at));
    for (const Check& link : chain.checks) {
        if (link.disagrees())
            verdict->notes << QStringLiteral("%1: %2").arg(name, link.disagreement);
    }
}
