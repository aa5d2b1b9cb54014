// Reading zthost's inputs: files or standard input, and byte values written
// as raw bytes, hex or Base64 text.
#ifndef ZTHOST_INPUT_H
#define ZTHOST_INPUT_H

#include <QByteArray>
#include <QString>

namespace input {

// Files larger than this are refused (the library takes int lengths).
constexpr qint64 kMaxInputSize = qint64(512) * 1024 * 1024;

// The whole content of `path`, "-" being standard input. Throws
// CommandFailure (status 1) with "PATH: reason" when it cannot be read.
QByteArray readFile(const QString& path);

// "standard input" for "-", the path otherwise.
QString displayName(const QString& path);

// Writes `bytes` to `path` ("-" = the results stream). Throws CommandFailure.
void writeFile(const QString& path, const QByteArray& bytes);

// The text with every blank, tab and line break removed.
QByteArray withoutWhitespace(const QByteArray& text);

// True when every byte is printable ASCII or white space.
bool isText(const QByteArray& bytes);

// Hex digits (either case; white space and ':' between bytes allowed) to
// bytes. False for anything else or an odd number of digits.
bool decodeHex(const QByteArray& text, QByteArray* bytes);

// How a byte value was written in its file.
enum class Encoding { Raw, Hex, Base64 };
const char* encodingName(Encoding encoding);

// A byte value (a signature, a digest) from `path`: raw bytes, or, when the
// file is text, hex or else strict standard Base64. Throws CommandFailure.
QByteArray readByteValue(const QString& path, Encoding* encoding = nullptr);

}  // namespace input

#endif
