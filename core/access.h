// The data paths of instructions: the only way a program's data reaches memory
// and ports with the devices looking on. Opcode and operand fetches, PushWord and
// PopWord, the editors and the loaders use the arrays directly instead.
#pragma once

#include "machine.h"

namespace mb {

// Devices that sit on the data paths. Only consulted while Machine::AccessHookMask
// is nonzero, so an idle path costs one integer test.
class AccessHooks {
public:
    virtual ~AccessHooks() = default;
    virtual int MemoryRead(Machine& m, int address) = 0;
    virtual void MemoryWrite(Machine& m, int address, int value) = 0;
    virtual int PortIn(Machine& m, int port) = 0;
    virtual void PortOut(Machine& m, int port, int value) = 0;
};

inline int MemoryRead(Machine& m, int address) {
    if (m.AccessHookMask) return m.Hooks->MemoryRead(m, address);
    m.LastReadAddress = address;
    return m.MemoryImage[address];
}

inline void MemoryWrite(Machine& m, int address, int value) {
    if (m.AccessHookMask) return m.Hooks->MemoryWrite(m, address, value);
    m.MemoryImage[address] = value;
    m.LastWriteAddress = address;
}

inline int PortIn(Machine& m, int port) {
    if (m.AccessHookMask) return m.Hooks->PortIn(m, port);
    return m.PortImage[port];
}

inline void PortOut(Machine& m, int port, int value) {
    if (m.AccessHookMask) return m.Hooks->PortOut(m, port, value);
    m.PortImage[port] = value;
}

}  // namespace mb
