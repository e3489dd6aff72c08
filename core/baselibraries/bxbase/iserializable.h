// Interface of objects with a binary form.
//
// A writer begins with WriteVersion(n) and the reader calls
// ReadAndCompareVersion(n), which rejects newer versions; the fields follow in
// a fixed order through the stream's typed operators, counts as unsigned
// 32-bit values before their elements.
//
//   void CPoint::Serialize(BxStreamWriteBinary& s) const { s.WriteVersion(1); s << m_x << m_y; }
//   void CPoint::Serialize(BxStreamReadBinary& s) { s.ReadAndCompareVersion(1); s >> m_x >> m_y; }
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/iobject.h>

class BxStreamWriteBinary;
class BxStreamReadBinary;

/// Interface of objects with a binary form.
class BXBASE_API ISerializable : public IObject
{
public:
    virtual void Serialize(BxStreamWriteBinary& stream) const = 0;
    virtual void Serialize(BxStreamReadBinary& stream) = 0;
};
