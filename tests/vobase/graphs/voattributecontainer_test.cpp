#include <vobase/graphs/voattributecontainer.h>

#include <bxbase/bxexceptioncontainer.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/ireferencecounted.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

class CCounted : public BxReferenceCountedObject
{
public:
    explicit CCounted(int& alive) : m_alive(alive) { ++m_alive; }
    ~CCounted() override { --m_alive; }

private:
    int& m_alive;
};

class CItems : public VoAttributeContainer
{
public:
    using VoAttributeContainer::VoAttributeContainer;
    int initialised = 0, deleted = 0;

protected:
    void onInitContainer(void*) override { ++initialised; }
    void onDeleteContainer(void*) override { ++deleted; }
};

}  // namespace

TEST(VoAttributeContainer, SlotsAreBuiltAndTornDownWithTheirElement)
{
    CItems items(1, 4);
    VoAttributeDefinition pointer(L"Pointer", 8, 68981, VoConstructor<BxSmartPointer<CCounted>>(),
                                  VoDestructor<BxSmartPointer<CCounted>>());
    VoAttributeDefinition taskId(L"TaskID", 4, 68985, VoConstructor<std::int32_t>(-1));
    VoAttributeDefinition flag(L"Flag", 1, 3, VoConstructor<std::uint8_t>(7));
    items.AddDefinition(pointer);
    items.AddDefinition(taskId);
    items.AddDefinition(flag);
    EXPECT_EQ(items.GetDefinitionCount(), 3u);
    EXPECT_EQ(pointer.GetContainer(), &items);
    EXPECT_EQ(taskId.GetElementSize(), 4u);
    EXPECT_EQ(taskId.GetAttributeID(), 68985u);
    EXPECT_EQ(taskId.GetName(), L"TaskID");
    // Slots do not overlap and are aligned for their types.
    EXPECT_EQ(pointer.GetOffset() % alignof(BxSmartPointer<CCounted>), 0u);
    EXPECT_GE(taskId.GetOffset(), pointer.GetOffset() + 8);
    EXPECT_GE(flag.GetOffset(), taskId.GetOffset() + 4);

    int alive = 0;
    std::vector<void*> elements;
    for (int i = 0; i < 10; ++i) {  // more than one block
        void* element = items.CreateElement();
        EXPECT_EQ(items.Get<std::int32_t>(taskId, element), -1);
        EXPECT_EQ(items.Get<std::uint8_t>(flag, element), 7);
        EXPECT_FALSE(items.Get<BxSmartPointer<CCounted>>(pointer, element));
        items.Get<BxSmartPointer<CCounted>>(pointer, element) = new CCounted(alive);
        items.Get<std::int32_t>(taskId, element) = i;
        elements.push_back(element);
    }
    EXPECT_EQ(alive, 10);
    EXPECT_EQ(items.GetElementCount(), 10u);
    EXPECT_EQ(items.initialised, 10);
    for (int i = 0; i < 10; ++i)  // elements kept their own values
        EXPECT_EQ(items.Get<std::int32_t>(taskId, elements[i]), i);

    items.ReleaseElement(elements[3]);
    EXPECT_EQ(alive, 9);  // the destructor dropped the reference
    EXPECT_EQ(items.deleted, 1);
    void* reused = items.CreateElement();
    EXPECT_EQ(reused, elements[3]);  // memory is reused, with fresh slots
    EXPECT_EQ(items.Get<std::int32_t>(taskId, reused), -1);
    elements[3] = reused;

    for (void* element : elements)
        items.ReleaseElement(element);
    items.ReleaseElement(nullptr);
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(items.GetElementCount(), 0u);
}

TEST(VoAttributeContainer, LayoutIsFixedWhileElementsLive)
{
    VoAttributeContainer items;
    VoAttributeDefinition first(L"First", 4, 1, VoConstructor<std::uint32_t>(5));
    VoAttributeDefinition second(L"Second", 4, 2, VoConstructor<std::uint32_t>(6));
    VoAttributeDefinition stranger(L"Stranger", 4, 3, VoConstructor<std::uint32_t>());
    items.AddDefinition(first);
    EXPECT_THROW(items.AddDefinition(first), BxExceptionContainer);  // registered already

    void* element = items.CreateElement();
    EXPECT_THROW(items.AddDefinition(second), BxExceptionContainer);
    EXPECT_THROW(items.Get<std::uint32_t>(stranger, element), BxExceptionContainer);
    items.ReleaseElement(element);

    items.AddDefinition(second);  // no element lives: the layout may grow
    element = items.CreateElement();
    EXPECT_EQ(items.Get<std::uint32_t>(first, element), 5u);
    EXPECT_EQ(items.Get<std::uint32_t>(second, element), 6u);
    items.ReleaseElement(element);
}

TEST(VoAttributeContainer, AFailingConstructionLeavesNothingBehind)
{
    VoAttributeContainer items;
    int built = 0;
    VoAttributeDefinition good(L"Good", 4, 1, [&](void*) { ++built; }, [&](void*) { --built; });
    VoAttributeDefinition bad(L"Bad", 4, 2, [](void*) { throw BxExceptionContainer(__FILE__, __LINE__, "x"); },
                              nullptr);
    items.AddDefinition(good);
    items.AddDefinition(bad);
    EXPECT_THROW(items.CreateElement(), BxExceptionContainer);
    EXPECT_EQ(built, 0);
    EXPECT_EQ(items.GetElementCount(), 0u);
}
