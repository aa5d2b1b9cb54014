// A read-only window on bytes owned elsewhere: a pointer, a size and the
// offset of the first byte in the input it was cut from. Reads split views
// off the front and hand them back as sub-views of the same memory, so
// nothing is copied and every offset is the one in the input file. The
// input must outlive its views.
#ifndef ZTHOST_READERS_BYTE_VIEW_H
#define ZTHOST_READERS_BYTE_VIEW_H

#include <QByteArray>

class ByteView {
public:
    ByteView() = default;
    ByteView(const unsigned char* data, int size, int offset) : data_(data), size_(size), offset_(offset) {}
    // The whole of `bytes`, offset 0.
    static ByteView of(const QByteArray& bytes) {
        return ByteView(reinterpret_cast<const unsigned char*>(bytes.constData()), bytes.size(), 0);
    }

    const unsigned char* data() const { return data_; }
    int size() const { return size_; }
    bool empty() const { return size_ == 0; }
    int offset() const { return offset_; }           // of the first byte in the input
    int end() const { return offset_ + size_; }     // one past the last byte
    unsigned char operator[](int index) const { return data_[index]; }

    // Moves the first `count` bytes into `head`. False, nothing moved, when
    // fewer are left.
    bool take(qint64 count, ByteView* head);
    bool takeByte(unsigned char* byte);
    bool skip(qint64 count);
    // The first `count` bytes (or all), without consuming them.
    ByteView first(int count) const;

    // True when `inner` is a window on the same memory inside this one.
    bool contains(const ByteView& inner) const;
    // True when both show the same bytes, wherever they lie.
    bool sameBytes(const ByteView& other) const;

    QByteArray toByteArray() const;  // a copy
    QString hex() const;              // upper-case hex

private:
    const unsigned char* data_ = nullptr;
    int size_ = 0;
    int offset_ = 0;
};

#endif
