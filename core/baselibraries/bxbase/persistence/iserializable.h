// Interface of objects with a persistence form: typed entries by key, read and
// written through IDataReader and IDataWriter (the JSON side of the framework).
//
//   class CPoint : public Persistence::ISerializable {
//       std::string GetTypeName() const override { return "CPoint"; }
//       void WriteTo(Persistence::IDataWriter& w) const override { w.Write("X", m_x); w.Write("Y", m_y); }
//       void ReadFrom(const Persistence::IDataReader& r) override { r.ReadRequired("X", m_x); ... }
//   };
#pragma once

#include <bxbase/bxbaseapi.h>

#include <string>

namespace Persistence {

class IDataReader;
class IDataWriter;

/// Interface of objects with a persistence form: typed entries by key, read and written through IDataReader and
/// IDataWriter (the JSON side of the framework).
class BXBASE_API ISerializable
{
public:
    virtual ~ISerializable() = default;

    /// The name under which the type's persistence form is known.
    virtual std::string GetTypeName() const = 0;
    /// Replaces the object's state with the entries of `reader`. Throws Persistence::CException when a required
    /// entry is missing or holds a wrong value; entries read before the failure may already be applied.
    virtual void ReadFrom(const IDataReader& reader) = 0;
    /// Writes the object's state as entries of `writer`, under the keys that ReadFrom expects.
    virtual void WriteTo(IDataWriter& writer) const = 0;
};

}  // namespace Persistence
