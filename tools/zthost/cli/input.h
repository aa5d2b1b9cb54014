// Reading zthost's inputs: files or standard input, and byte values written
// as raw bytes, hex or Base64 text.
#ifndef ZTHOST_INPUT_H
#define ZTHOST_INPUT_H

#include <QByteArray>
#include <QString>

namespace input {

// Files larger than this are refused (the library takes int lengths).
constexpr qint64 kMaxInputSize = qint64(512) * 1024 * 1024;
// Certificates, keys and signature values are small; larger files are no
// such thing.
constexpr qint64 kMaxValueSize = qint64(16) * 1024 * 1024;

// The whole content of `path`, "-" being standard input. A file whose size
// exceeds `limit` is refused before it is read (a pipe when it has sent
// more). Throws CommandFailure (status 1) with "PATH: reason" when it cannot
// be read.
QByteArray readFile(const QString& path, qint64 limit = kMaxInputSize);

// Reads `path` ("-": standard input) in pieces of up to 64 KiB and hands
// each to `consume`, without a size limit; `label` names the work in the
// progress line standard error shows when it is a terminal and the reading
// takes more than a second. Throws CommandFailure as readFile does.
template <typename Consume>
void readChunks(const QString& path, const QString& label, Consume consume);

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
// The same on `content` already read from `path`.
QByteArray decodeByteValue(const QByteArray& content, const QString& path, Encoding* encoding = nullptr);

// The type-erased reader behind readChunks.
using ChunkConsumer = void (*)(void* state, const char* data, int size);
void readChunksWith(const QString& path, const QString& label, ChunkConsumer consumer, void* state);

template <typename Consume>
void readChunks(const QString& path, const QString& label, Consume consume) {
    readChunksWith(path, label,
                   [](void* state, const char* data, int size) { (*static_cast<Consume*>(state))(data, size); },
                   &consume);
}

}  // namespace input

#endif
