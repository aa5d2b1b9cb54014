#include "verify/verdict.h"

namespace {

Report answerReport(Answer answer) {
    return answer == Answer::NotAsked ? Report() : Report::boolean(answer == Answer::Yes);
}

}  // namespace

Answer answerOf(bool yes) {
    return yes ? Answer::Yes : Answer::No;
}

Check sm3Check(CheckScope scope, const QString& name, bool libraryMatches, bool strictMatches, const QString& problem) {
    Check check;
    check.scope = scope;
    check.name = name;
    check.library = answerOf(libraryMatches);
    check.strict = answerOf(strictMatches);
    check.problem = problem;
    check.disagreement = QStringLiteral("the library's SM3 of the same bytes differs from OpenSSL's");
    return check;
}

Report checkReport(const Check& check) {
    return Report::object()
        .set("check", check.name)
        .set("library", answerReport(check.library))
        .set("strict", answerReport(check.strict))
        .set("disagreement", check.disagrees() ? Report::text(check.disagreement) : Report());
}

void SignatureVerdict::add(CheckScope scope, const QString& name, bool passed, const QString& problem) {
    Check check;
    check.name = name;
    check.scope = scope;
    check.library = answerOf(passed);
    check.problem = passed ? QString() : problem;
    checks.push_back(check);
}

bool SignatureVerdict::passed(const QString& name) const {
    for (const Check& check : checks) {
        if (check.name == name)
            return check.passed();
    }
    return false;
}

std::optional<bool> SignatureVerdict::scopePassed(CheckScope scope) const {
    std::optional<bool> passed;
    for (const Check& check : checks) {
        if (check.scope == scope)
            passed = passed.value_or(true) && !check.failed();
    }
    return passed;
}

Report SignatureVerdict::scopeReport(CheckScope scope) const {
    const std::optional<bool> passed = scopePassed(scope);
    return passed ? Report::boolean(*passed) : Report();
}

bool SignatureVerdict::signatureValid() const {
    for (const Check& check : checks) {
        if (check.scope == CheckScope::Signature && check.failed())
            return false;
    }
    return passed(QStringLiteral("signature"));
}

bool SignatureVerdict::valid() const {
    for (const Check& check : checks) {
        if (check.failed())
            return false;
    }
    return passed(QStringLiteral("signature"));
}

QStringList SignatureVerdict::problems() const {
    QStringList list;
    for (const Check& check : checks) {
        if (check.failed())
            list << check.problem;
    }
    return list;
}

QStringList SignatureVerdict::disagreements() const {
    QStringList list;
    for (const Check& check : checks) {
        if (check.disagrees())
            list << check.disagreement;
    }
    return list;
}

Report SignatureVerdict::toReport() const {
    Report report = Report::object();
    report.set("document", document);
    report.set("id", id);
    report.set("type", type);
    report.set("format", format);
    report.set("signer", signer);
    report.set("seal_name", sealName);
    report.set("seal_id", sealId);
    report.set("time", time);
    report.set("references_checked", referencesChecked);
    report.set("references_failed", referencesFailed);
    report.set("signature_valid", signatureValid());
    report.set("seal_valid", type == QLatin1String("Sign") ? Report() : scopeReport(CheckScope::Seal));
    report.set("valid", valid());
    Report problemList = Report::array();
    for (const QString& problem : problems())
        problemList.append(Report::text(problem));
    report.set("problems", problemList);
    Report noteList = Report::array();
    for (const QString& note : notes)
        noteList.append(Report::text(note));
    report.set("notes", noteList);
    Report checkList = Report::array();
    for (const Check& check : checks) {
        checkList.append(checkReport(check));
    }
    report.set("checks", checkList);
    return report;
}

namespace {

QString validText(const std::optional<bool>& passed) {
    if (!passed)
        return QStringLiteral("-");
    return *passed ? QStringLiteral("valid") : QStringLiteral("NOT VALID");
}

void line(QString& out, const char* label, const QString& value) {
    out += QStringLiteral("  %1 %2\n").arg(QLatin1String(label) + QLatin1Char(':'), -13).arg(value);
}

}  // namespace

QString SignatureVerdict::toText() const {
    QString out = QStringLiteral("signature %1 (%2) in %3\n").arg(id.isEmpty() ? QStringLiteral("?") : id, type, document);
    line(out, "format", format);
    line(out, "signer", signer);
    if (type != QLatin1String("Sign"))
        line(out, "seal name", sealId.isEmpty() ? sealName : QStringLiteral("%1 (%2)").arg(sealName, sealId));
    line(out, "time", time);
    line(out, "references", QStringLiteral("%1 checked, %2 failed").arg(referencesChecked).arg(referencesFailed));
    line(out, "signature", signatureValid() ? QStringLiteral("valid") : QStringLiteral("NOT VALID"));
    if (type != QLatin1String("Sign"))
        line(out, "seal", validText(scopePassed(CheckScope::Seal)));
    line(out, "verdict", valid() ? QStringLiteral("VALID") : QStringLiteral("NOT VALID"));
    for (const QString& problem : problems())
        line(out, "problem", problem);
    for (const QString& disagreement : disagreements())
        line(out, "disagreement", disagreement);
    for (const QString& note : notes)
        line(out, "note", note);
    return out;
}
