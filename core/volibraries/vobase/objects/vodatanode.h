// A node that carries one value object of a base-types value class T (BxInt32,
// BxString, ...), held as BxSmartPointer<T>.
//
//   BxSmartPointer<VoDataNode<BxInt32>> node(
//       new VoDataNode<BxInt32>(L"count", BxMakeSmartPointer<BxInt32>(7), true, VoNode::eTMM_Track));
//   node->GetData()->Set(8);
//   node->CreateData(L"BxInt32");       // a fresh BxInt32 made by the type registry
//   node->CreateData(L"BxString");      // not a BxInt32: the data becomes null
//
// The concrete classes (VoDataNodeBool ... VoDataNodeString) are registered in
// the type registry under their class names. The data pointer is guarded by
// the node lock; the value itself by the data manager's read and write locks.
#pragma once

#include <vobase/vobaseapi.h>
#include <vobase/objects/vodatanodebase.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/bxvalue.h>

#include <string>

/// A node that carries one value object of a base-types value class T (BxInt32, BxString, ...), held as
/// BxSmartPointer<T>.
template <class T>
class VOBASE_API VoDataNode : public VoDataNodeBase
{
public:
    /// A node named "__noname" without data.
    VoDataNode() = default;
    /// A node named `name` carrying `data` (which may be null); `serializeLeaves`
    /// and `mode` as for VoNode.
    VoDataNode(const wchar_t* name, BxSmartPointer<T> data, bool serializeLeaves = true,
               ETrackModificationMode mode = eTMM_Track)
        : VoDataNodeBase(name, serializeLeaves, mode), m_data(std::move(data))
    {
    }

    /// Replaces the data with a new object of the registered class `className`,
    /// kept only when it is a T (otherwise the data becomes null).
    void CreateData(const CStringW& className) override
    {
        std::unique_ptr<IObject> made = BxRTTI::CreateByName(className);
        BxSmartPointer<T> data;
        if (T* typed = dynamic_cast<T*>(made.get())) {
            (void)made.release();
            data = typed;
        }
        SetData(std::move(data));
    }
    /// typeid(T), whether or not the node holds data at the moment.
    const std::type_info& GetDataTypeInfo() const override { return typeid(T); }
    /// True: typed data nodes are serializable.
    bool IsSerializable() const override { return true; }

    /// The data (may be null).
    BxSmartPointer<T> GetData()
    {
        BxCriticalSectionLocker lock(getLock());
        return m_data;
    }
    /// The data, read-only (may be null).
    BxSmartPointer<const T> GetData() const
    {
        BxCriticalSectionLocker lock(getLock());
        return m_data;
    }
    /// Replaces the data; the previous object is released outside the node lock.
    void SetData(BxSmartPointer<T> data)
    {
        {
            BxCriticalSectionLocker lock(getLock());
            m_data.swap(data);
        }
    }

protected:
    /// The data as a read-only reference-counted object (null without data).
    BxSmartPointer<const IReferenceCounted> getData() const override { return GetData(); }

    /// The registry record of the data's class; without data throws BxException
    /// at "VoDataNode<class T>::getRTTIData".
    const BxRTTI* getRTTIData() const override
    {
        const BxSmartPointer<const T> data = GetData();
        if (!data) {
            const std::string function =
                "VoDataNode<class " + BxStringConvert::WideToUtf8(T::RTTI.GetName()) + ">::getRTTIData";
            BX_THROW(BxException, function.c_str(), L"node \"" + GetName() + L"\" has no data");
        }
        return BxRTTI::Find(data->GetClassNameW());
    }

    /// Renames the node (the caller decides whether that is allowed).
    void setName(const CStringW& name)
    {
        BxCriticalSectionLocker lock(getLock());
        VoNode::m_name = name;
    }

private:
    /// Guarded by the node lock.
    BxSmartPointer<T> m_data;
};

extern template class VoDataNode<BxBool>;
extern template class VoDataNode<BxChar>;
extern template class VoDataNode<BxFloat32>;
extern template class VoDataNode<BxFloat64>;
extern template class VoDataNode<BxInt8>;
extern template class VoDataNode<BxInt16>;
extern template class VoDataNode<BxInt32>;
extern template class VoDataNode<BxInt64>;
extern template class VoDataNode<BxUInt8>;
extern template class VoDataNode<BxUInt16>;
extern template class VoDataNode<BxUInt32>;
extern template class VoDataNode<BxUInt64>;
extern template class VoDataNode<BxLong>;
extern template class VoDataNode<BxULong>;
extern template class VoDataNode<BxString>;
