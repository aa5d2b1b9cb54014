// DER elements read off a ByteView: single-octet tags, definite lengths of
// up to four octets (the long form is accepted even where a short one would
// do). Every element is a pair of views into the input, so offsets are file
// offsets and the bytes a signature covers are the bytes in the file.
#ifndef ZTHOST_READERS_DER_H
#define ZTHOST_READERS_DER_H

#include <QString>
#include <vector>

#include "readers/byte_view.h"
#include "readers/der_tags.h"
#include "readers/format_error.h"

namespace der {

struct Element {
    unsigned char tag = 0;
    ByteView whole;    // tag, length and content octets
    ByteView content;  // content octets
    int offset() const { return whole.offset(); }
    int headerLength() const { return whole.size() - content.size(); }
    bool constructed() const { return (tag & tag::kConstructed) != 0; }
};

// The next element at the front of `in`, which then starts after it. False,
// `in` unchanged, when the bytes there are no complete element.
bool readElement(ByteView* in, Element* element);
// `bytes` holds exactly one element.
bool readSingle(const ByteView& bytes, Element* element);
// The elements of a constructed element's content; false unless they fill
// it exactly.
bool readChildren(const Element& parent, std::vector<Element>* children);
// True when the length octets are the shortest form for the length.
bool hasMinimalLength(const Element& element);

// The children of a constructed element, taken in order by a structure
// reader. Each step checks the tag and throws FormatError naming the field
// and its offset.
class Fields {
public:
    // `what` names the structure in messages; throws unless `element` is
    // constructed with tag `expectedTag` and its children fill it.
    Fields(const Element& element, unsigned char expectedTag, const QString& what);

    Element next(unsigned char expectedTag, const char* field);
    Element nextAny(const char* field);
    // The next child if it has `expectedTag`; false (nothing taken) otherwise.
    bool nextIf(unsigned char expectedTag, Element* element);
    bool atEnd() const { return index_ >= children_.size(); }
    int count() const { return int(children_.size()); }
    int remaining() const { return int(children_.size() - index_); }
    const Element& peek() const;
    // Throws when children are left over.
    void expectEnd() const;

private:
    std::vector<Element> children_;
    size_t index_ = 0;
    QString what_;
};

// Throws FormatError: "<what> at offset N has tag 0xTT, expected 0xEE".
[[noreturn]] void throwTagMismatch(const Element& element, unsigned char expectedTag, const QString& what);
// `bytes` as one element with `expectedTag`, or FormatError naming `what`.
Element expectSingle(const ByteView& bytes, unsigned char expectedTag, const QString& what);

}  // namespace der

#endif
