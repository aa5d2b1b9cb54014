// The results of a command as an ordered record, printed either as aligned
// "label: value" lines or, with --json, as one JSON document.
#ifndef ZTHOST_REPORT_H
#define ZTHOST_REPORT_H

#include <QByteArray>
#include <QString>
#include <memory>
#include <utility>
#include <vector>

class Report {
public:
    enum class Kind { Null, Bool, Number, Text, Array, Object };

    Report() = default;  // null
    static Report object() { return Report(Kind::Object); }
    static Report array() { return Report(Kind::Array); }
    static Report text(const QString& value);
    static Report number(qint64 value);
    static Report boolean(bool value);

    // Object members keep the order in which they are set. Keys are
    // snake_case; the text form shows them with blanks.
    Report& set(const char* key, Report value);
    Report& set(const char* key, const QString& value) { return set(key, text(value)); }
    Report& set(const char* key, const char* value) { return set(key, text(QString::fromUtf8(value))); }
    Report& set(const char* key, qint64 value) { return set(key, number(value)); }
    Report& set(const char* key, int value) { return set(key, number(value)); }
    Report& set(const char* key, bool value) { return set(key, boolean(value)); }
    Report& append(Report value);

    Kind kind() const { return kind_; }
    const QString& textValue() const { return text_; }
    const std::vector<std::pair<QString, Report>>& members() const { return members_; }
    const std::vector<Report>& items() const { return items_; }

    // JSON with two-blank indentation and a final newline.
    QByteArray toJson() const;
    // "label: value" lines, labels padded to one column; nested objects and
    // arrays are indented below their label.
    QString toText() const;

private:
    explicit Report(Kind kind) : kind_(kind) {}

    Kind kind_ = Kind::Null;
    QString text_;
    qint64 number_ = 0;
    bool bool_ = false;
    std::vector<std::pair<QString, Report>> members_;
    std::vector<Report> items_;

    void writeJson(QByteArray& out, int indent) const;
    QString scalarText() const;
    void writeText(QString& out, int indent) const;
};

// Prints `report` as JSON or text on the results stream.
void printReport(const Report& report, bool json);

#endif
