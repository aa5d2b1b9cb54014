#include "output/report.h"

#include <cstdio>

#include "output/console.h"

namespace {

void appendEscape(QByteArray& out, ushort unit) {
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\u%04x", unit);
    out += escaped;
}

// JSON text: UTF-8, with the escapes JSON requires. A surrogate pair is one
// character (U+1F600 comes out as its four UTF-8 bytes); a lone surrogate,
// which UTF-8 cannot carry, is written as a \u escape.
void appendJsonString(QByteArray& out, const QString& text) {
    out += '"';
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const ushort code = c.unicode();
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            out += text.mid(i, 2).toUtf8();
            ++i;
            continue;
        }
        switch (code) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (code < 0x20 || c.isSurrogate())
                appendEscape(out, code);
            else
                out += QString(c).toUtf8();
        }
    }
    out += '"';
}

QString labelOf(const QString& key) {
    QString label = key;
    label.replace(QLatin1Char('_'), QLatin1Char(' '));
    return label;
}

bool isNested(const Report& value) {
    return value.kind() == Report::Kind::Object || value.kind() == Report::Kind::Array;
}

}  // namespace

Report Report::text(const QString& value) {
    Report report(Kind::Text);
    report.text_ = value;
    return report;
}

Report Report::number(qint64 value) {
    Report report(Kind::Number);
    report.number_ = value;
    return report;
}

Report Report::boolean(bool value) {
    Report report(Kind::Bool);
    report.bool_ = value;
    return report;
}

Report& Report::set(const char* key, Report value) {
    const QString name = QString::fromLatin1(key);
    for (auto& member : members_) {
        if (member.first == name) {
            member.second = std::move(value);
            return *this;
        }
    }
    members_.emplace_back(name, std::move(value));
    return *this;
}

Report& Report::append(Report value) {
    items_.push_back(std::move(value));
    return *this;
}

QByteArray Report::toJson() const {
    QByteArray out;
    writeJson(out, 0);
    out += '\n';
    return out;
}

void Report::writeJson(QByteArray& out, int indent) const {
    const QByteArray inner(indent + 2, ' ');
    switch (kind_) {
    case Kind::Null: out += "null"; return;
    case Kind::Bool: out += bool_ ? "true" : "false"; return;
    case Kind::Number: out += QByteArray::number(number_); return;
    case Kind::Text: appendJsonString(out, text_); return;
    case Kind::Array:
        if (items_.empty()) {
            out += "[]";
            return;
        }
        out += "[\n";
        for (size_t i = 0; i < items_.size(); ++i) {
            out += inner;
            items_[i].writeJson(out, indent + 2);
            out += i + 1 < items_.size() ? ",\n" : "\n";
        }
        out += QByteArray(indent, ' ') + ']';
        return;
    case Kind::Object:
        if (members_.empty()) {
            out += "{}";
            return;
        }
        out += "{\n";
        for (size_t i = 0; i < members_.size(); ++i) {
            out += inner;
            appendJsonString(out, members_[i].first);
            out += ": ";
            members_[i].second.writeJson(out, indent + 2);
            out += i + 1 < members_.size() ? ",\n" : "\n";
        }
        out += QByteArray(indent, ' ') + '}';
        return;
    }
}

QString Report::scalarText() const {
    switch (kind_) {
    case Kind::Null: return QStringLiteral("-");
    case Kind::Bool: return bool_ ? QStringLiteral("yes") : QStringLiteral("no");
    case Kind::Number: return QString::number(number_);
    case Kind::Text: return text_;
    default: return QString();
    }
}

QString Report::toText() const {
    QString out;
    writeText(out, 0);
    return out;
}

void Report::writeText(QString& out, int indent) const {
    const QString pad(indent, QLatin1Char(' '));
    if (kind_ == Kind::Array) {
        for (const Report& item : items_) {
            if (isNested(item)) {
                item.writeText(out, indent);
                if (item.kind() == Kind::Object)
                    out += QLatin1Char('\n');
            } else {
                out += pad + item.scalarText() + QLatin1Char('\n');
            }
        }
        return;
    }
    if (kind_ != Kind::Object) {
        out += pad + scalarText() + QLatin1Char('\n');
        return;
    }
    int width = 0;
    for (const auto& member : members_)
        width = qMax(width, labelOf(member.first).size() + 1);
    for (const auto& member : members_) {
        const QString label = labelOf(member.first) + QLatin1Char(':');
        if (isNested(member.second)) {
            out += pad + label + QLatin1Char('\n');
            member.second.writeText(out, indent + 2);
        } else {
            const QString value = member.second.scalarText();
            out += pad + (value.isEmpty() ? label : label.leftJustified(width + 1) + value) + QLatin1Char('\n');
        }
    }
}

void printReport(const Report& report, bool json) {
    if (json)
        console::writeBytes(report.toJson());
    else
        console::print(report.toText());
}
