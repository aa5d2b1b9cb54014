#include "readers/byte_view.h"

#include <QString>
#include <cstring>

bool ByteView::take(qint64 count, ByteView* head) {
    if (count < 0 || count > size_)
        return false;
    const int length = static_cast<int>(count);
    *head = ByteView(data_, length, offset_);
    data_ += length;
    size_ -= length;
    offset_ += length;
    return true;
}

bool ByteView::takeByte(unsigned char* byte) {
    if (size_ < 1)
        return false;
    *byte = data_[0];
    return skip(1);
}

bool ByteView::skip(qint64 count) {
    ByteView ignored;
    return take(count, &ignored);
}

ByteView ByteView::first(int count) const {
    return ByteView(data_, count < size_ ? count : size_, offset_);
}

bool ByteView::contains(const ByteView& inner) const {
    if (inner.size_ == 0)
        return inner.offset_ >= offset_ && inner.offset_ <= end();
    return inner.data_ >= data_ && inner.data_ + inner.size_ <= data_ + size_ &&
           inner.offset_ - offset_ == inner.data_ - data_;
}

bool ByteView::sameBytes(const ByteView& other) const {
    return size_ == other.size_ && (size_ == 0 || std::memcmp(data_, other.data_, size_t(size_)) == 0);
}

QByteArray ByteView::toByteArray() const {
    return QByteArray(reinterpret_cast<const char*>(data_), size_);
}

QString ByteView::hex() const {
    return QString::fromLatin1(toByteArray().toHex().toUpper());
}
