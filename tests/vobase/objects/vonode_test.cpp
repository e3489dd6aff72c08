#include "vonodetestaccess.h"

#include <vobase/objects/vodatanodeint32.h>
#include <vobase/objects/vodatanodestring.h>
#include <vobase/objects/vodatanodeulong.h>

#include <bxbase/bxstreamwriteasciistringt.h>

#include <gtest/gtest.h>

#include <vector>

using Access = VoNodeTestAccess;
using Node = BxSmartPointer<VoNode>;

namespace {

Node makeNode(const wchar_t* name, VoNode::ETrackModificationMode mode = VoNode::eTMM_Track)
{
    return Node(new VoNode(name, true, mode));
}

// root
//  |-- a
//  |   |-- a1
//  |   |-- a2
//  |-- b
struct Tree
{
    Node root = makeNode(L"root"), a = makeNode(L"a"), a1 = makeNode(L"a1"), a2 = makeNode(L"a2"),
         b = makeNode(L"b");
    Tree()
    {
        Access::Link(root, a);
        Access::Link(a, a1);
        Access::Link(a, a2);
        Access::Link(root, b);
    }
    ~Tree() { Access::Release(root); }
    std::vector<Node> all() const { return {root, a, a1, a2, b}; }
};

CStringW dumpOf(const Node& node)
{
    BxStreamWriteASCIIStringT<CStringW> out;
    node->dump(out);
    return out.GetString();
}

// A stand-in for the data manager: only its address is used.
VoDataManager* fakeManager()
{
    static int storage;
    return reinterpret_cast<VoDataManager*>(&storage);
}

}  // namespace

TEST(VoNode, DefaultsAndStructure)
{
    const Node plain(new VoNode);
    EXPECT_EQ(plain->GetName(), L"__noname");
    EXPECT_TRUE(plain->IsSerializeLeaves());
    EXPECT_FALSE(plain->IsSerializable());
    EXPECT_FALSE(plain->IsManaged());
    EXPECT_EQ(plain->GetDataTypeInfo(), typeid(void));
    EXPECT_FALSE(plain->IsKindOfData(BxInt32::RTTI));
    EXPECT_TRUE(Access::UnlockedEvent(plain).IsSet());

    Tree t;
    EXPECT_EQ(t.root->GetChildrenCount(), 2u);
    EXPECT_TRUE(t.a->HasChildren());
    EXPECT_FALSE(t.b->HasChildren());
    EXPECT_EQ(t.root->FindChild(L"b"), t.b);
    EXPECT_EQ(t.root->FindChild(L"B"), nullptr);     // case-sensitive
    EXPECT_EQ(t.root->FindChild(L"a1"), nullptr);    // children only
    const VoNode& constRoot = *t.root;
    EXPECT_EQ(constRoot.FindChild(L"a").get(), t.a.get());
    const auto children = constRoot.GetChildren();
    ASSERT_EQ(children.size(), 2u);
    EXPECT_EQ(children[0].get(), t.a.get());
    EXPECT_EQ(children[1].get(), t.b.get());

    EXPECT_EQ(t.a1->GetParent(), t.a);
    EXPECT_EQ(t.root->GetParent(), nullptr);
    EXPECT_TRUE(t.a1->IsDescendantOf(t.root));
    EXPECT_TRUE(t.a1->IsDescendantOf(t.a));
    EXPECT_FALSE(t.a1->IsDescendantOf(t.a1));  // not its own descendant
    EXPECT_FALSE(t.a1->IsDescendantOf(t.b));
    EXPECT_FALSE(t.root->IsDescendantOf(t.a));
}

TEST(VoNode, ModificationTracking)
{
    Tree t;
    EXPECT_FALSE(t.root->IsModified(true));
    t.a2->SetModified(true, false);
    EXPECT_FALSE(t.root->IsModified(false));
    EXPECT_TRUE(t.root->IsModified(true));   // a modified grandchild

    const Node quiet = makeNode(L"quiet", VoNode::eTMM_DontTrack);
    Tree u;
    Access::Link(u.a1, quiet);
    quiet->SetModified(true, false);
    EXPECT_FALSE(quiet->IsModified(false));
    EXPECT_FALSE(u.root->IsModified(true));  // its mode is non-zero

    t.root->SetModified(true, true);
    for (const Node& n : t.all())
        EXPECT_TRUE(n->IsModified(false));
    t.root->SetModified(false, true);
    EXPECT_FALSE(t.root->IsModified(true));
}

TEST(VoNode, RenamingOnlyOutsideADataTree)
{
    Tree t;
    const Node child = makeNode(L"before");
    child->SetName(L"renamed");  // not yet inserted
    EXPECT_EQ(child->GetName(), L"renamed");
    Access::SetDataManager(t.root, fakeManager());
    Access::Link(t.root, child);
    Access::SetDataManager(child, fakeManager());
    EXPECT_TRUE(child->IsManaged());
    EXPECT_EQ(t.a2->GetDataManager(), fakeManager());  // the whole subtree
    try {
        child->SetName(L"again");
        FAIL() << "a managed node was renamed";
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoNode::SetName");
        EXPECT_NE(e.GetSourceFile().find("vonode"), std::string::npos);
    }
    EXPECT_EQ(child->GetName(), L"renamed");
}

TEST(VoNode, UnlinkLeavesTheParentAndClearsTheManager)
{
    Tree t;
    Access::SetDataManager(t.root, fakeManager());
    Access::Unlink(t.a, false, true);
    EXPECT_EQ(t.a->GetParent(), nullptr);
    EXPECT_EQ(t.root->GetChildrenCount(), 1u);
    EXPECT_EQ(t.root->FindChild(L"a"), nullptr);
    EXPECT_FALSE(t.a->IsManaged());
    EXPECT_FALSE(t.a2->IsManaged());
    EXPECT_TRUE(t.b->IsManaged());
    EXPECT_EQ(t.a1->GetParent(), t.a);  // children stay

    Access::Unlink(t.a, true, false);
    EXPECT_EQ(t.a1->GetParent(), nullptr);
    EXPECT_FALSE(t.a->HasChildren());
    EXPECT_EQ(t.a->getReferenceCounter().Get(), 1u);  // only the test holds it now

    // A node held only by its parent survives its own unlink while it runs
    // (and is freed at its end; the address sanitizer checks both).
    VoNode* loose = new VoNode(L"loose", true, VoNode::eTMM_Track);
    Access::Link(t.b, Node(loose));
    Access::Link(Node(loose), makeNode(L"looseChild"));
    Access::UnlinkRaw(loose, true, true);
    EXPECT_FALSE(t.b->HasChildren());
}

TEST(VoNode, DumpFormat)
{
    Tree t;
    const Node leaf(new VoDataNodeInt32(L"n"));
    Access::Link(t.a2, leaf);
    t.a->SetModified(true, false);
    EXPECT_EQ(dumpOf(t.root),
              L"root [VoNode]\n"
              L" |-- a * [VoNode]\n"
              L" |   |-- a1 [VoNode]\n"
              L" |   |-- a2 [VoNode]\n"
              L" |   |   |-- n [VoDataNodeInt32]\n"
              L" |-- b [VoNode]\n");
    BxStreamWriteASCIIStringT<CStringW> out;
    Access::Dump(t.b, out, 2);
    EXPECT_EQ(out.GetString(), L" |   |-- b [VoNode]\n");
}

TEST(VoNode, ApplyRecursiveVisitsInPreOrder)
{
    Tree t;
    std::vector<CStringW> names;
    t.root->ApplyRecursive([&](BxSmartPointer<VoNode> n) { names.push_back(n->GetName()); });
    EXPECT_EQ(names, (std::vector<CStringW>{L"root", L"a", L"a1", L"a2", L"b"}));
    names.clear();
    const VoNode& constA = *t.a;
    constA.ApplyRecursive([&](BxSmartPointer<const VoNode> n) { names.push_back(n->GetName()); });
    EXPECT_EQ(names, (std::vector<CStringW>{L"a", L"a1", L"a2"}));

    t.root->ApplyRecursive(std::function<void(BxSmartPointer<VoNode>)>());  // empty: nothing

    // Children added while visiting are visited too.
    int visits = 0;
    t.b->ApplyRecursive([&](BxSmartPointer<VoNode> n) {
        ++visits;
        if (n->GetName() == L"b")
            Access::Link(n, makeNode(L"added"));
    });
    EXPECT_EQ(visits, 2);
}

TEST(VoNodeCounters, ReadLockCountsOnTheWholeSubtree)
{
    Tree t;
    const unsigned me = Access::ThisThread();
    Access::IncrementRead(t.a, me);
    for (const Node& n : {t.a, t.a1, t.a2}) {
        EXPECT_EQ(Access::TotalRead(n), 1u);
        EXPECT_EQ(Access::Entry(n, me).readCount, 1u);
        EXPECT_FALSE(Access::UnlockedEvent(n).IsSet());
        EXPECT_TRUE(Access::IsReadLocked(n));
        EXPECT_FALSE(Access::IsWriteLocked(n));
    }
    EXPECT_FALSE(Access::IsLocked(t.root));
    EXPECT_TRUE(Access::UnlockedEvent(t.b).IsSet());

    // A decrement for a thread without reads changes nothing anywhere.
    Access::DecrementRead(t.a, me + 1);
    EXPECT_EQ(Access::TotalRead(t.a1), 1u);
    Access::DecrementWrite(t.a, me);
    EXPECT_EQ(Access::TotalRead(t.a), 1u);

    Access::DecrementRead(t.a, me);
    for (const Node& n : {t.a, t.a1, t.a2}) {
        EXPECT_EQ(Access::TotalRead(n), 0u);
        EXPECT_TRUE(Access::UnlockedEvent(n).IsSet());
    }
    Access::DecrementRead(t.a, me);  // already 0: no underflow
    EXPECT_EQ(Access::TotalRead(t.a1), 0u);
}

TEST(VoNodeCounters, WriteLockAndTheEvent)
{
    Tree t;
    const unsigned me = Access::ThisThread();
    Access::IncrementWrite(t.root, me);
    Access::IncrementRead(t.root, me);  // re-entering for reading while writing
    EXPECT_EQ(Access::TotalWrite(t.a1), 1u);
    EXPECT_EQ(Access::TotalRead(t.a1), 1u);
    Access::DecrementRead(t.root, me);
    EXPECT_TRUE(Access::UnlockedEvent(t.a1).IsSet());  // reads reached 0
    EXPECT_TRUE(Access::IsWriteLocked(t.a1));
    Access::IncrementRead(t.root, me);
    EXPECT_TRUE(Access::UnlockedEvent(t.a1).IsSet());  // not reset while writes are counted
    Access::DecrementRead(t.root, me);
    Access::IncrementWrite(t.root, me);
    EXPECT_EQ(Access::Entry(t.b, me).writeCount, 2u);
    Access::DecrementWrite(t.root, me);
    EXPECT_TRUE(Access::IsWriteLocked(t.b));
    Access::DecrementWrite(t.root, me);
    for (const Node& n : t.all()) {
        EXPECT_FALSE(Access::IsLocked(n));
        EXPECT_TRUE(Access::UnlockedEvent(n).IsSet());
    }
}

TEST(VoNodeCounters, AdaptAndReset)
{
    Tree t;
    const unsigned me = Access::ThisThread();
    Access::IncrementRead(t.root, me);
    Access::IncrementRead(t.root, 4242);
    Access::IncrementWrite(t.root, 4242);

    // A new subtree takes over the counts of the node it joins.
    const Node fresh = makeNode(L"fresh");
    const Node freshChild = makeNode(L"freshChild");
    Access::Link(fresh, freshChild);
    Access::AdaptCounters(fresh, *t.b);
    for (const Node& n : {fresh, freshChild}) {
        EXPECT_EQ(Access::TotalRead(n), 2u);
        EXPECT_EQ(Access::TotalWrite(n), 1u);
        EXPECT_EQ(Access::Entry(n, 4242).writeCount, 1u);
        EXPECT_EQ(Access::Entry(n, me).readCount, 1u);
        EXPECT_FALSE(Access::UnlockedEvent(n).IsSet());
    }

    Access::Reset(t.root, 3, 0);
    for (const Node& n : t.all()) {
        EXPECT_EQ(Access::TotalRead(n), 3u);
        EXPECT_EQ(Access::TotalWrite(n), 0u);
        EXPECT_EQ(Access::Entry(n, me).readCount, 3u);
        EXPECT_EQ(Access::Entry(n, 4242).readCount, 0u);
        EXPECT_EQ(Access::Entry(n, 4242).writeCount, 0u);
    }
    Access::Reset(t.root, 0, 0);
    for (const Node& n : t.all())
        EXPECT_TRUE(Access::UnlockedEvent(n).IsSet());
    Access::AdaptCounters(fresh, *t.b);
    EXPECT_TRUE(Access::UnlockedEvent(freshChild).IsSet());
    Access::Release(fresh);
}

TEST(VoNodeCounters, EventMadeLateStartsInTheCountersStateAndFollowsThem)
{
    Tree t;
    const unsigned me = Access::ThisThread();
    Access::IncrementWrite(t.a, me);
    BxEvent& late = Access::UnlockedEvent(t.a1);  // first asked while locked
    EXPECT_FALSE(late.IsSet());
    const BxEvent copy = late;  // what a waiting locker holds
    Access::DecrementWrite(t.a, me);
    EXPECT_TRUE(copy.IsSet());
    Access::IncrementRead(t.root, me);
    EXPECT_FALSE(copy.IsSet());
    EXPECT_EQ(&Access::UnlockedEvent(t.a1), &late) << "one event per node";
    Access::DecrementRead(t.root, me);
    EXPECT_TRUE(copy.IsSet());
}

TEST(VoNodeCounters, ManyThreadsOverflowEveryNodeOfTheSubtreeAndLeaveNoMap)
{
    Tree t;
    const unsigned threads = static_cast<unsigned>(VoNodeThreadCounts::c_inlineEntries) + 3;
    for (unsigned k = 0; k < threads; ++k)
        Access::IncrementRead(t.a, 1000 + k);
    Access::IncrementWrite(t.a2, 1000 + threads - 1);
    for (const Node& n : {t.a, t.a1, t.a2}) {
        EXPECT_EQ(Access::TotalRead(n), threads);
        EXPECT_EQ(Access::EntryCount(n), threads);
        EXPECT_TRUE(Access::HasOverflow(n));
        for (unsigned k = 0; k < threads; ++k)
            EXPECT_EQ(Access::Entry(n, 1000 + k).readCount, 1u);
    }
    EXPECT_EQ(Access::Entry(t.a2, 1000 + threads - 1).writeCount, 1u);

    // A subtree joining a.1 takes over every thread's counts, overflow ones included.
    const Node fresh = makeNode(L"fresh");
    Access::AdaptCounters(fresh, *t.a1);
    EXPECT_EQ(Access::EntryCount(fresh), threads);
    EXPECT_EQ(Access::Entry(fresh, 1000 + threads - 1).readCount, 1u);

    // Releasing in the order taken empties the overflow maps again.
    Access::DecrementWrite(t.a2, 1000 + threads - 1);
    for (unsigned k = 0; k < threads; ++k)
        Access::DecrementRead(t.a, 1000 + k);
    for (const Node& n : {t.a, t.a1, t.a2}) {
        EXPECT_FALSE(Access::IsLocked(n));
        EXPECT_FALSE(Access::HasOverflow(n));
        EXPECT_LE(Access::EntryCount(n), VoNodeThreadCounts::c_inlineEntries);
        EXPECT_TRUE(Access::UnlockedEvent(n).IsSet());
    }
    Access::Reset(fresh, 0, 0);
    EXPECT_EQ(Access::EntryCount(fresh), 0u);
    EXPECT_FALSE(Access::HasOverflow(fresh));
}

TEST(VoDataNode, TypedNodesAndTheRegistry)
{
    const BxSmartPointer<VoDataNodeInt32> node(new VoDataNodeInt32(L"count"));
    EXPECT_TRUE(node->IsSerializable());
    EXPECT_EQ(node->GetDataTypeInfo(), typeid(BxInt32));
    ASSERT_TRUE(node->GetData());
    EXPECT_EQ(node->GetData()->Get(), 0);
    EXPECT_TRUE(node->IsKindOfData(BxInt32::RTTI));
    EXPECT_FALSE(node->IsKindOfData(BxLong::RTTI));
    EXPECT_TRUE(node->IsKindOf(VoDataNodeBase::RTTI));
    EXPECT_TRUE(node->IsKindOf(VoNode::RTTI));
    EXPECT_FALSE(node->Is(VoDataNodeBase::RTTI));

    node->CreateData(L"BxString");  // not a BxInt32: the data is dropped
    EXPECT_FALSE(node->GetData());
    try {
        (void)node->IsKindOfData(BxInt32::RTTI);
        FAIL() << "a node without data named its data type";
    } catch (const BxException& e) {
        EXPECT_EQ(e.GetFunctionName(), "VoDataNode<class BxInt32>::getRTTIData");
        EXPECT_NE(e.GetSourceFile().find("vodatanode"), std::string::npos);
    }
    node->CreateData(L"BxInt32");
    ASSERT_TRUE(node->GetData());
    node->CreateData(L"NoSuchClass");
    EXPECT_FALSE(node->GetData());

    const wchar_t* names[] = {L"VoDataNodeBool",   L"VoDataNodeChar",   L"VoDataNodeFloat32", L"VoDataNodeFloat64",
                              L"VoDataNodeInt8",   L"VoDataNodeInt16",  L"VoDataNodeInt32",   L"VoDataNodeInt64",
                              L"VoDataNodeUInt8",  L"VoDataNodeUInt16", L"VoDataNodeUInt32",  L"VoDataNodeUInt64",
                              L"VoDataNodeLong",   L"VoDataNodeULong",  L"VoDataNodeString"};
    for (const wchar_t* name : names) {
        SCOPED_TRACE(BxStringConvert::WideToUtf8(name));
        std::unique_ptr<IObject> made = BxRTTI::CreateByName(name);
        ASSERT_TRUE(made);
        EXPECT_STREQ(made->GetClassNameW(), name);
        auto* typed = dynamic_cast<VoDataNodeBase*>(made.get());
        ASSERT_NE(typed, nullptr);
        const Node owned(typed);
        (void)made.release();
        EXPECT_TRUE(owned->IsKindOfData(*BxRTTI::Find(std::wstring(L"Bx") + (name + 10))));
    }
    std::unique_ptr<IObject> base = BxRTTI::CreateByName(L"VoDataNodeBase");
    ASSERT_TRUE(base);
    EXPECT_TRUE(base->Is(VoDataNodeBase::RTTI));
    const Node baseOwned(dynamic_cast<VoNode*>(base.release()));
    EXPECT_FALSE(baseOwned->IsKindOfData(BxInt32::RTTI));
}

TEST(VoNode, FindChildInLongChildListsFollowsRemovalAndRenaming)
{
    // Long child lists are searched through a name index: it must follow
    // every way the list changes.
    const Node root = makeNode(L"root");
    std::vector<Node> children;
    for (int i = 0; i < 100; ++i) {
        children.push_back(makeNode((L"c" + std::to_wstring(i)).c_str()));
        Access::Link(root, children.back());
    }
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(root->FindChild(L"c" + std::to_wstring(i)), children[i]) << i;
    EXPECT_FALSE(root->FindChild(L"c100"));

    Access::Unlink(children[40], false, false);
    EXPECT_FALSE(root->FindChild(L"c40"));
    EXPECT_EQ(root->GetChildrenCount(), 99u);

    children[41]->SetName(L"renamed");  // the tree is not managed
    EXPECT_FALSE(root->FindChild(L"c41"));
    EXPECT_EQ(root->FindChild(L"renamed"), children[41]);

    Access::Release(root);
    EXPECT_FALSE(root->FindChild(L"c0"));
    Access::Link(root, children[0]);  // short again: found by scanning
    EXPECT_EQ(root->FindChild(L"c0"), children[0]);
    Access::Release(root);
}
