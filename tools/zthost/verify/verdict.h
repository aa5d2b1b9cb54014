// What verifying one signature found: every check with the library's answer
// beside a strict, independent answer where zthost makes one (the strict
// answer then decides, and a disagreement is said in one sentence), and the
// facts a person wants to see.
#ifndef ZTHOST_VERIFY_VERDICT_H
#define ZTHOST_VERIFY_VERDICT_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

#include "output/report.h"

enum class Answer { NotAsked, Yes, No };

// What a check is about: the signed files, the signature itself, the seal.
enum class CheckScope { Document, Signature, Seal };

Answer answerOf(bool yes);

struct Check {
    QString name;  // "signature", "data hash", "reference Doc_0/Pages/Page_0/Content.xml"
    CheckScope scope = CheckScope::Signature;
    Answer library = Answer::NotAsked;  // through the library (or on what it computed)
    Answer strict = Answer::NotAsked;   // an independent strict check
    QString problem;       // in plain words, when it failed
    QString disagreement;  // one sentence, when the two answers differ
    // The strict answer where one was made, else the library's.
    Answer verdict() const { return strict != Answer::NotAsked ? strict : library; }
    bool passed() const { return verdict() == Answer::Yes; }
    bool failed() const { return !passed(); }
    bool disagrees() const {
        return library != Answer::NotAsked && strict != Answer::NotAsked && library != strict;
    }
};

// A comparison with a digest made twice, by the library's SM3 and by
// OpenSSL's: `libraryMatches` and `strictMatches` say whether each matched.
Check sm3Check(CheckScope scope, const QString& name, bool libraryMatches, bool strictMatches, const QString& problem);

// {check, library, strict, disagreement}: answers true, false or null.
Report checkReport(const Check& check);

struct SignatureVerdict {
    QString document;  // the Signatures.xml it is listed in
    QString id;
    QString type;      // "Seal" or "Sign"
    QString format;    // "GB/T 38540 (v4), version 4", "GM/T 0010 signedData"
    QString signer;    // the signer certificate's CN
    QString sealName;
    QString sealId;
    QString time;      // ISO 8601 UTC, or as written when unreadable
    int referencesChecked = 0;
    int referencesFailed = 0;
    std::vector<Check> checks;
    QStringList notes;     // worth knowing, not a failure
    QByteArray picture;    // the seal's picture, if any
    QString pictureExtension;

    // A check answered by the library (or on what it computed) only.
    void add(CheckScope scope, const QString& name, bool passed, const QString& problem = QString());
    void add(Check check) { checks.push_back(std::move(check)); }
    // A check that could not be made: it counts as failed.
    void fail(CheckScope scope, const QString& name, const QString& problem) { add(scope, name, false, problem); }
    bool passed(const QString& name) const;
    // Empty when the scope has no checks; otherwise whether none failed.
    std::optional<bool> scopePassed(CheckScope scope) const;
    // The signature's own checks passed, the signature itself among them.
    bool signatureValid() const;
    // No check failed, and the signature itself was verified.
    bool valid() const;
    QStringList problems() const;
    // Where the library and the strict check answered differently.
    QStringList disagreements() const;
    Report toReport() const;
    // scopePassed as JSON: true, false or null.
    Report scopeReport(CheckScope scope) const;
    // The block a person reads: facts, the two verdicts, then every problem.
    QString toText() const;
};

#endif
