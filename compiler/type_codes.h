// The data types of the BASIC dialect, as the compiler's tables number them.
#pragma once

#include <string>
#include <string_view>

namespace mb {

enum TypeCode : int {
    kTypeNone = 0,
    kTypeBit = 1,        // Bit, Boolean: 0 or 255
    kTypeShort = 2,      // signed 8-bit
    kTypeInteger = 3,    // signed 16-bit
    kTypeLong = 4,       // signed 32-bit
    kTypeSingle = 5,     // 32-bit float
    kTypeString = 6,     // characters and a 0 terminator
    kTypeStrPtr = 10,    // 16-bit address of a string
    kTypeUShort = 12,    // Byte, UShort
    kTypeUInteger = 13,  // Word, UInteger
    kTypeULong = 14,
};

// The type of a type name as written in Dim and argument lists (exact case),
// or kTypeNone.
TypeCode typeOfName(std::string_view name);
// Bytes of one value; 0 for String, whose size is its declared length + 1.
int typeSize(TypeCode type);
// "(ushort) ": the tag of the address comments.
std::string typeTag(TypeCode type);
// "UShort": the word of the User Variables report.
std::string typeWord(TypeCode type);

}  // namespace mb
