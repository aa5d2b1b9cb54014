// The ASN function set: a small DER engine over a tree of plain records.
//
// One-octet tags, definite lengths of at most four length octets (the
// indefinite form 0x80 reads as empty content), no schema. A node owns its
// content (primitive) or its child cells and children (constructed); a tree is
// freed from its root with ASNDeleteBlock. All memory is malloc/calloc/free.
//
// The length cache (lenBytes, lenByteCount, blockLength) is only right after
// ASNUpdate ran on the node since the last change below it: run ASNUpdate on
// the root after every parse or edit and before ASNGetBlockLength or
// ASNBuildData. Re-encoding always uses minimal definite lengths.
//
// Parsing descends into at most ZT_ASN_MAX_NESTING_DEPTH nested levels (the
// node passed in counting as level 1). A deeper node is treated like any other
// child that fails to parse: its parent's child list ends quietly before it.
//
// Results: 1 / a pointer for success, 0 / null for failure. Nothing is
// printed and no error state is kept.
#ifndef ZTUTIL_ASN_H
#define ZTUTIL_ASN_H

#include <stddef.h>

#include "ztutil_global.h"

#define ZT_ASN_MAX_NESTING_DEPTH 128

typedef struct stASN_BLOCK_HEADER stASN_BLOCK_HEADER;
typedef struct stASN_CHILD_LINK stASN_CHILD_LINK;
typedef struct stASN_BIT_STRING stASN_BIT_STRING;

// One cell of a constructed node's child list, in document order.
struct stASN_CHILD_LINK {
    stASN_BLOCK_HEADER* node;
    stASN_CHILD_LINK* next;  // null at the end
};

// One DER node. Which variant it is follows from bit 0x20 of `tag`.
struct stASN_BLOCK_HEADER {
    unsigned char tag;           // the identifier octet as written
    unsigned char lenBytes[5];   // the length field as ASNBuildData writes it
    unsigned char lenByteCount;  // valid octets of lenBytes (1-5); 0 until ASNUpdate
    unsigned int blockLength;    // tag + length octets + content; 0 until ASNUpdate
    ZTUTIL_EXTENSION union {
        struct {  // primitive (tag without 0x20)
            unsigned char* data;      // heap copy of the content, null when empty
            unsigned int dataLength;  // content octets
        };
        struct {  // constructed (tag with 0x20)
            stASN_BLOCK_HEADER* parent;    // as given at creation; stored only
            stASN_CHILD_LINK* firstChild;  // null without children
            stASN_CHILD_LINK* lastChild;   // null without children
        };
    };
};

// The value form of a BIT STRING.
struct stASN_BIT_STRING {
    unsigned char unusedBits;  // the first content octet
    unsigned int length;       // payload octets (content length - 1)
    unsigned char* data;       // payload
};

// --- Tree editing ---------------------------------------------------------

// Appends `child` at the end of the constructed `parent`'s child list.
// 0 if parent is null or primitive, or no memory.
ZTUTIL_C_API unsigned int ASNAppendChild(stASN_BLOCK_HEADER* parent, stASN_BLOCK_HEADER* child);
// New constructed node (tag must have 0x20), appended to `parent` if given.
ZTUTIL_C_API stASN_BLOCK_HEADER* ASNAddStruct(unsigned char tag, stASN_BLOCK_HEADER* parent);
// New primitive node (tag must lack 0x20), appended to `parent` if given.
ZTUTIL_C_API stASN_BLOCK_HEADER* ASNAddSample(unsigned char tag, stASN_BLOCK_HEADER* parent);
// Frees a root (or an unlinked node) with its whole subtree. Null is ignored.
ZTUTIL_C_API void ASNDeleteBlock(stASN_BLOCK_HEADER* node);
// Replaces a primitive node's content with a copy of `size` octets (null or 0
// empties it). 0 if the node is null or constructed, or no memory (the old
// content then stays). dataLength keeps the low 32 bits of size.
ZTUTIL_C_API unsigned int ASNSetBlockData(stASN_BLOCK_HEADER* node, const unsigned char* data,
                                          size_t size);
// The child at a 0-based index; null if out of range or the node is primitive.
ZTUTIL_C_API stASN_BLOCK_HEADER* ASNGetChild(stASN_BLOCK_HEADER* node, int index);
// Unlinks and frees the child at `index`. Lengths are not recomputed.
ZTUTIL_C_API unsigned int ASNRemoveChild(stASN_BLOCK_HEADER* node, int index);

// --- Parsing --------------------------------------------------------------

// Total size (tag + length octets + content) of the TLV at `data`, or 0 when
// its length form is unsupported or it does not fit in `available` octets.
ZTUTIL_C_API unsigned int ASNCalcBlockLength(const unsigned char* data, unsigned int available);
// Parses the first TLV at `data` into a new node (with its subtree) appended
// to `parent` (null: a new root). Trailing octets are ignored. A child that
// fails to parse ends its parent's child list; the parent is still returned.
ZTUTIL_C_API stASN_BLOCK_HEADER* ASNAddByData(stASN_BLOCK_HEADER* parent,
                                              const unsigned char* data, size_t size);

// --- Lengths and encoding -------------------------------------------------

// Primitive content octets of the node and everything below it (tag and
// length octets are not counted). 0 for null.
ZTUTIL_C_API unsigned int ASNGetDataLength(stASN_BLOCK_HEADER* node);
// The cached total encoded size; 0 for null.
ZTUTIL_C_API unsigned int ASNGetBlockLength(stASN_BLOCK_HEADER* node);
// Length octets DER needs for a content length: 1, 2, 3, 4 or 5.
ZTUTIL_C_API unsigned int ASNCalcLengthBytes(unsigned int contentLength);
// Recomputes the length cache of the node and its subtree. 0 for null.
ZTUTIL_C_API unsigned int ASNUpdate(stASN_BLOCK_HEADER* node);
// Writes the node's encoding. 0 if the node is null or blockLength > size.
// Never writes outside [out, out + size).
ZTUTIL_C_API unsigned int ASNBuildData(stASN_BLOCK_HEADER* node, unsigned char* out,
                                       unsigned int size);

// --- Value helpers --------------------------------------------------------

// Reads exactly n decimal digits at *cursor, advancing past each. A non-digit
// sets *error to 1 and returns 0 with the cursor on it; a value outside
// [min, max] sets *error to 1 and is still returned. *error is never cleared.
ZTUTIL_C_API int mypint(const char** cursor, int n, int min, int max, int* error);

// Seconds since 1970-01-01 00:00:00 UTC of a UTCTime (0x17) or
// GeneralizedTime (0x18) node; 0 on failure. *errorCode (if given): 0 success,
// 1 wrong tag or bad text, 2 out of range. UTCTime years 50-99 are 19xx.
// A GeneralizedTime without zone is local time (mktime).
ZTUTIL_C_API long long ASNGetTime(stASN_BLOCK_HEADER* node, unsigned int* errorCode);

// Fills `value` with the BIT STRING's unused-bits octet and a malloc'ed copy of
// its payload (release value->data with free).
ZTUTIL_C_API unsigned int ASNGetBitStringData(stASN_BLOCK_HEADER* node, stASN_BIT_STRING* value);
// Sets a BIT STRING's content to unusedBits followed by the payload.
ZTUTIL_C_API unsigned int ASNSetBitStringDataEx(stASN_BLOCK_HEADER* node,
                                                const stASN_BIT_STRING* value);
ZTUTIL_C_API unsigned int ASNSetBitStringData(stASN_BLOCK_HEADER* node, const unsigned char* data,
                                              unsigned int length, unsigned char unusedBits);

// OBJECT IDENTIFIER content octets for dotted text. The first two arcs make
// one octet (first * 40 + second, low 8 bits); later arcs of 0 are dropped.
// When out and *capacity are given and *capacity is large enough the octets
// are copied and *capacity set to their count; otherwise nothing is written
// and the result is still 1. 0 for null text, no out and no capacity, or a
// character other than a digit or '.'.
ZTUTIL_C_API unsigned int ASNGetOIDData(const char* text, unsigned char* out,
                                        unsigned int* capacity);
// Dotted text for OBJECT IDENTIFIER content (count must exceed 1). The first
// arc and the second arc of the first octet are one character each. Texts of
// up to 99 characters are supported (0 beyond). When out is given and
// *capacity >= the text length, the text and its NUL (length + 1 octets) are
// copied and *capacity set to the length; otherwise nothing is written and the
// result is still 1.
ZTUTIL_C_API unsigned int ASNGetOIDName(const unsigned char* data, int count, char* out,
                                        unsigned int* capacity);

#endif
