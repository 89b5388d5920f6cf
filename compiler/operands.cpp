// Operands: a name of the program resolved to its type and place, array
// elements with a variable index (descriptors) and their address code, and the
// loads and stores by which generated code reaches any operand.
#include <cstdlib>

#include "compiler/basic_numbers.h"
#include "compiler/compiler.h"
#include "compiler/output_text.h"
#include "core/numtext.h"
#include "settings/settings_store.h"

namespace mb {

namespace {

int registerWidth(const std::string& reg) {
    if (reg == "BC:DE") return 4;
    return reg.size() == 2 ? 2 : 1;
}

int typeWidth(TypeCode type) {
    return type == kTypeString ? 2 : typeSize(type);
}

std::string lowOf(const std::string& pair) {
    return pair.substr(1, 1);
}
std::string highOf(const std::string& pair) {
    return pair.substr(0, 1);
}

// "(IX-05H)" for an offset in reach of an indexed access, or "".
std::string indexed(int offset) {
    if (offset >= -126 && offset < 0) return "(IX-" + codeHex2(-offset) + ")";
    return "";
}

bool elementCode(TypeCode t) {
    return t == kTypeBit || t == kTypeShort || t == kTypeInteger || t == kTypeLong ||
           t == kTypeSingle || t == kTypeUShort || t == kTypeUInteger || t == kTypeULong;
}

}  // namespace

bool isSignedType(TypeCode type) {
    return type == kTypeShort || type == kTypeInteger || type == kTypeLong || type == kTypeSingle;
}

bool isIntegerType(TypeCode type) {
    return type == kTypeShort || type == kTypeInteger || type == kTypeLong || type == kTypeUShort ||
           type == kTypeUInteger || type == kTypeULong;
}

bool isNumericType(TypeCode type) {
    return isIntegerType(type) || type == kTypeSingle;
}

TypeCode signedCounterpart(TypeCode type) {
    switch (type) {
        case kTypeUShort: return kTypeShort;
        case kTypeUInteger: return kTypeInteger;
        case kTypeULong: return kTypeLong;
        default: return type;
    }
}

// ---------------------------------------------------------------------------
// Names to places

Resolved Compiler::resolve(const std::string& text, bool keepSign, bool keepString,
                           const std::string& scope) {
    Resolved r;
    if (st_.symbols.size() <= 1 || text.empty()) return r;
    std::string head = text;
    std::vector<std::string> parts;
    const std::size_t dot = text.find('.');
    if (dot != std::string::npos && dot > 0) {
        head = text.substr(0, dot);
        std::size_t from = dot + 1;
        while (true) {
            const std::size_t next = text.find('.', from);
            parts.push_back(text.substr(from, next == std::string::npos ? next : next - from));
            if (next == std::string::npos) break;
            from = next + 1;
        }
    }
    if (head.find('(') != std::string::npos || head.find(')') != std::string::npos) {
        if (!resolveElement(head, scope, r)) return Resolved{};
    } else {
        const int row = lookupVariable(head, scope);
        if (row == 0) return r;
        const SymbolRow& s = st_.symbols[row];
        r = {true, s.type, s.address, s.size};
        if (!keepString && s.type == kTypeString) r.type = kTypeUShort;  // its first character
        if (!keepString && s.type == kTypeStrPtr) r.type = kTypeUInteger;
    }
    for (const std::string& part : parts) {
        if (r.address >= kDescriptorBase) return Resolved{};
        const int width = typeSize(r.type);
        int offset = -1;
        TypeCode type = kTypeUShort;
        if (part == "LB") {
            offset = 0;
        } else if (part == "HB" && width >= 2) {
            offset = 1;
        } else if ((part == "3B" || part == "4B") && width == 4) {
            offset = part == "3B" ? 2 : 3;
        } else if ((part == "LW" || part == "HW") && width == 4) {
            offset = part == "LW" ? 0 : 2;
            type = kTypeUInteger;
        }
        if (offset < 0 || width == 0) return Resolved{};
        r.address += offset;
        r.type = type;
        r.size = 0;
    }
    if (!keepSign) r.type = signedCounterpart(r.type);
    return r;
}

bool Compiler::resolveElement(const std::string& text, const std::string& scope, Resolved& r) {
    const std::size_t open = text.find('(');
    if (open == std::string::npos || text.back() != ')' || open == 0) return false;
    const std::string name = text.substr(0, open);
    const std::string index = TrimText(text.substr(open + 1, text.size() - open - 2));
    const int row = lookupVariable(name, scope);
    if (row == 0) return false;
    const SymbolRow& array = st_.symbols[row];
    TypeCode element = array.type == kTypeString ? kTypeUShort : array.type;
    if (!elementCode(element)) return false;
    const int elementSize = typeSize(element);
    const int last = array.type == kTypeString ? array.size - 1 : array.size - 1;
    const int indexRow = lookupVariable(index, scope);
    if (indexRow > 0) {
        const SymbolRow& i = st_.symbols[indexRow];
        if (!isIntegerType(i.type) || i.address >= kDescriptorBase) return false;
        if (array.size == 0 && array.type != kTypeString) {
            warnLine("Variable '" + name + "' not declared as array.");
            forceWarnings();
        }
        checkForLoopRange(name, index, last);
        const int descriptor = -array.address * kDescriptorBase - i.address;
        descriptorIndexTypes_[descriptor] = i.type;
        r = {true, element, descriptor, 0};
        return true;
    }
    const std::optional<uint32_t> value = readNumber(index);
    if (!value || *value >= 100000) return false;
    if (!st_.firstRun) {
        if (array.size == 0 && array.type != kTypeString) {
            warnLine("Variable '" + name + "' not declared as array.");
            forceWarnings();
        } else if (static_cast<int>(*value) > last) {
            warnLine("Array index out of declared range: '" + text + "'. Expected index range 0-" +
                     std::to_string(last) + ".");
            forceWarnings();
        }
    }
    const int address = std::min(array.address + elementSize * static_cast<int>(*value), -1);
    r = {true, element, address, 0};
    return true;
}

// Array range warnings turn Show Warnings on, whatever the user chose.
void Compiler::forceWarnings() {
    options_.showWarnings = true;
    warningsForced_ = true;
    settings_.SetSettingInt(kKeyShowWarnings, 1);
}

void Compiler::checkForLoopRange(const std::string&, const std::string&, int) {}

// ---------------------------------------------------------------------------
// Element addresses

void Compiler::emitElementAddress(int descriptor, TypeCode element, bool protectDE) {
    const int baseOffset = -(descriptor / kDescriptorBase);
    const int indexOffset = -(descriptor % kDescriptorBase);
    const auto known = descriptorIndexTypes_.find(descriptor);
    const bool wideIndex = known == descriptorIndexTypes_.end() || typeSize(known->second) >= 2;
    const int size = typeSize(element);
    const std::string base = codeHex4(absoluteAddress(baseOffset));
    if (protectDE) emitCode("PUSH DE");
    // The index into DE (size 1) or HL (sizes 2 and 4).
    const std::string pair = size == 1 ? "DE" : "HL";
    const std::string low = indexed(indexOffset);
    if (!low.empty()) {
        emitCode("LD " + lowOf(pair) + "," + low);
        emitCode(wideIndex ? "LD " + highOf(pair) + "," + indexed(indexOffset + 1)
                           : "LD " + highOf(pair) + ",00H");
    } else {
        emitCode("LD HL," + codeHex4(absoluteAddress(indexOffset)));
        emitCode("LD E,(HL)");
        if (wideIndex) {
            emitCode("INC HL");
            emitCode("LD D,(HL)");
        } else {
            emitCode("LD D,00H");
        }
        if (size > 1) emitCode("EX DE,HL");
    }
    if (size > 1) {
        emitCode("ADD HL,HL");
        if (size == 4) emitCode("ADD HL,HL");
        emitCode("EX DE,HL");
    }
    emitCode("LD HL," + base);
    emitCode("ADD HL,DE");
    if (protectDE) emitCode("POP DE");
}

// ---------------------------------------------------------------------------
// Loads

bool Compiler::isNumberText(const std::string& text) const {
    if (text.empty() || findVariable(text) > 0) return false;
    const std::string body = text[0] == '-' || text[0] == '+' ? text.substr(1) : text;
    return readNumber(body).has_value() || readSingle(body).has_value();
}

bool Compiler::loadConstant(TypeCode type, const std::string& reg, const std::string& text) {
    const int width = registerWidth(reg);
    long long value = 0;
    if (type == kTypeSingle && width == 4) {
        if (!constantValue(kTypeSingle, text, value)) return false;
    } else {
        TypeCode check = type;
        if (typeSize(type) != width || type == kTypeSingle || type == kTypeBit) {
            check = width == 1 ? kTypeUShort : width == 2 ? kTypeUInteger : kTypeULong;
        }
        // A negative constant in an unsigned width is its two's complement.
        if (!text.empty() && text[0] == '-') check = signedCounterpart(check);
        if (!constantValue(check, text, value)) return false;
    }
    if (width == 1) {
        emitCode(value == 0 && reg == "A" ? "XOR A" : "LD " + reg + "," + codeHex2(int(value)));
    } else if (width == 2) {
        emitCode("LD " + reg + "," + codeHex4(int(value & 0xFFFF)));
    } else {
        emitCode("LD BC," + codeHex4(int((value >> 16) & 0xFFFF)));
        emitCode("LD DE," + codeHex4(int(value & 0xFFFF)));
    }
    return true;
}

void Compiler::loadByte(const std::string& reg, int address, TypeCode element, bool protectDE) {
    if (address >= kDescriptorBase) {
        // A caller keeping A or L loaded keeps it: the address code uses DE and HL only.
        emitElementAddress(address, element, protectDE && reg != "E");
        emitCode("LD " + reg + ",(HL)");
        return;
    }
    const std::string ix = indexed(address);
    if (reg == "A") {
        emitCode("LD A,(" + codeHex4(absoluteAddress(address)) + ")");
    } else if (!ix.empty()) {
        emitCode("LD " + reg + "," + ix);
    } else {
        emitCode("LD HL," + codeHex4(absoluteAddress(address)));
        emitCode("LD " + reg + ",(HL)");
    }
}

void Compiler::loadRaw(TypeCode sourceType, const std::string& reg, int address, bool protectDE) {
    const int width = registerWidth(reg);
    const int source = typeWidth(sourceType);
    if (width == 1) {
        loadByte(reg, address, sourceType, protectDE);
        return;
    }
    const bool descriptor = address >= kDescriptorBase;
    const std::string a = descriptor ? "" : codeHex4(absoluteAddress(address));
    if (width == 2) {
        if (source >= 2) {
            if (!descriptor) {
                emitCode("LD " + reg + ",(" + a + ")");
            } else {
                emitElementAddress(address, sourceType, protectDE && reg != "DE");
                if (reg == "HL") {
                    for (const char* l : {"LD A,(HL)", "INC HL", "LD H,(HL)", "LD L,A"})
                        emitCode(l);
                } else {
                    emitCode("LD " + lowOf(reg) + ",(HL)");
                    emitCode("INC HL");
                    emitCode("LD " + highOf(reg) + ",(HL)");
                }
            }
        } else if (!isSignedType(sourceType)) {
            loadByte(lowOf(reg), address, sourceType, protectDE);
            emitCode("LD " + highOf(reg) + ",00H");
        } else {
            loadByte("A", address, sourceType, protectDE);
            emitCode("LD " + lowOf(reg) + ",A");
            emitCode("RLCA");
            emitCode("SBC A,A");
            emitCode("LD " + highOf(reg) + ",A");
        }
        return;
    }
    if (source == 1 && !isSignedType(sourceType)) {
        loadByte("E", address, sourceType, false);
        emitCode("LD BC,0000H");
        emitCode("LD D,B");
    } else if (source == 1) {
        loadByte("A", address, sourceType, false);
        for (const char* l : {"LD E,A", "RLCA", "SBC A,A", "LD D,A", "LD C,A", "LD B,A"}) {
            emitCode(l);
        }
    } else if (source == 2) {
        loadRaw(sourceType, "DE", address, false);
        if (isSignedType(sourceType)) {
            for (const char* l : {"LD A,D", "RLCA", "SBC A,A", "LD C,A", "LD B,A"}) emitCode(l);
        } else {
            emitCode("LD BC,0000H");
        }
    } else if (descriptor) {
        emitElementAddress(address, sourceType, false);
        for (const char* l :
             {"LD E,(HL)", "INC HL", "LD D,(HL)", "INC HL", "LD C,(HL)", "INC HL", "LD B,(HL)"}) {
            emitCode(l);
        }
    } else {
        emitCode("LD DE,(" + a + ")");
        emitCode("LD BC,(" + codeHex4(absoluteAddress(address) + 2) + ")");
    }
}

bool Compiler::load(TypeCode type, const std::string& reg, TypeCode sourceType,
                    const std::string& text, int address, bool protectDE) {
    if (isNumberText(text)) return loadConstant(type, reg, text);
    const int width = registerWidth(reg);
    if (sourceType == kTypeSingle && type != kTypeSingle) {
        // Truncated to a Long first, then the low part taken.
        if (protectDE && width < 4) emitCode("PUSH DE");
        loadRaw(kTypeSingle, "BC:DE", address, false);
        emitCode("CALL X001");
        needRuntime(kNeedSingleToLong);
        if (width == 1 && reg != "E") emitCode("LD " + reg + ",E");
        if (width == 2 && reg == "HL") emitCode("EX DE,HL");
        if (width == 2 && reg == "BC") {
            emitCode("LD B,D");
            emitCode("LD C,E");
        }
        if (protectDE && width < 4) emitCode("POP DE");
        return true;
    }
    if (type == kTypeSingle && sourceType != kTypeSingle && width == 4) {
        loadRaw(sourceType, "BC:DE", address, false);
        emitCode(sourceType == kTypeULong ? "CALL X111" : "CALL X101");
        needRuntime(kNeedLongToSingle);
        return true;
    }
    loadRaw(sourceType, reg, address, protectDE);
    return true;
}

// ---------------------------------------------------------------------------
// Stores

bool Compiler::store(TypeCode destType, int address, TypeCode sourceType, const std::string& reg) {
    const int width = typeWidth(destType);
    std::string r = reg;
    const int have = registerWidth(r);
    const bool descriptor = address >= kDescriptorBase;
    if (width == 1) {
        if (have > 1) r = have == 4 ? "E" : lowOf(r);  // the low part
        if (descriptor) {
            if (r != "A") emitCode("LD A," + r);
            emitElementAddress(address, destType, false);
            emitCode("LD (HL),A");
            return true;
        }
        const std::string a = codeHex4(absoluteAddress(address));
        const std::string ix = indexed(address);
        if (r == "A") {
            emitCode("LD (" + a + "),A");
        } else if (r == "L" || r == "H") {
            emitCode("LD A," + r);
            emitCode("LD (" + a + "),A");
        } else if (!ix.empty()) {
            emitCode("LD " + ix + "," + r);
        } else {
            emitCode("LD HL," + a);
            emitCode("LD (HL)," + r);
        }
        return true;
    }
    // Widen an 8-bit register into a pair, or take a pair's part.
    if (have == 1) {
        const std::string pair = width == 2 ? "HL" : "DE";
        if (r != lowOf(pair)) emitCode("LD " + lowOf(pair) + "," + r);
        if (isSignedType(sourceType)) {
            emitCode("LD A," + lowOf(pair));
            emitCode("RLCA");
            emitCode("SBC A,A");
            emitCode("LD " + highOf(pair) + ",A");
        } else {
            emitCode("LD " + highOf(pair) + ",00H");
        }
        r = pair;
        if (width == 4) sourceType = isSignedType(sourceType) ? kTypeInteger : kTypeUInteger;
    } else if (have == 4 && width == 2) {
        r = "DE";
    }
    if (width == 2) {
        if (!descriptor) {
            emitCode("LD (" + codeHex4(absoluteAddress(address)) + ")," + r);
            return true;
        }
        emitCode("PUSH " + r);
        emitElementAddress(address, destType, false);
        emitCode("POP DE");
        for (const char* l : {"LD (HL),E", "INC HL", "LD (HL),D"}) emitCode(l);
        return true;
    }
    if (registerWidth(r) == 2) {
        if (r == "HL") emitCode("EX DE,HL");
        if (r == "BC") {
            emitCode("LD D,B");
            emitCode("LD E,C");
        }
        if (isSignedType(sourceType)) {
            for (const char* l : {"LD A,D", "RLCA", "SBC A,A", "LD C,A", "LD B,A"}) emitCode(l);
        } else {
            emitCode("LD BC,0000H");
        }
    }
    if (!descriptor) {
        const int absolute = absoluteAddress(address);
        emitCode("LD (" + codeHex4(absolute) + "),DE");
        emitCode("LD (" + codeHex4(absolute + 2) + "),BC");
        return true;
    }
    emitCode("PUSH DE");
    emitElementAddress(address, destType, false);
    emitCode("POP DE");
    for (const char* l :
         {"LD (HL),E", "INC HL", "LD (HL),D", "INC HL", "LD (HL),C", "INC HL", "LD (HL),B"}) {
        emitCode(l);
    }
    return true;
}

void Compiler::needRuntime(int flag) {
    st_.learned.needs.Set(flag);
}

}  // namespace mb
