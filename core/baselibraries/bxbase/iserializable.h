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
    /// Writes the object's binary form to `stream`: a version word first, then the fields in a fixed order.
    /// Throws BxExceptionStream when the stream fails.
    virtual void Serialize(BxStreamWriteBinary& stream) const = 0;
    /// Reads the object's binary form from `stream`, replacing its state. Throws BxExceptionWrongFileVersion when
    /// the stored version is newer than the class knows and BxExceptionStream on truncated or malformed data.
    virtual void Serialize(BxStreamReadBinary& stream) = 0;
};
