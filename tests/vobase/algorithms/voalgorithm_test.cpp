#include <vobase/algorithms/voaalgorithm.h>
#include <vobase/algorithms/voalgorithm.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxexceptionstd.h>
#include <bxbase/bxexceptionunknownextension.h>
#include <bxbase/bxexceptionstream.h>
#include <bxbase/diagnostics/bxconditionhandler.h>
#include <bxbase/threading/bxevent.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// An algorithm whose hooks answer as told and count their calls.
class CProbe : public VoAlgorithm
{
public:
    enum EFlagBits : std::uint32_t { eFast = 0x1, eSafe = 0x2, eLoud = 0x4 };

    bool preInit = true, postInit = true, pre = true, post = true, result = true;
    int initCalls = 0, computeCalls = 0;
    std::function<void()> throwInInit, throwInCompute;

    using VoAlgorithm::checkOutputData;
    using VoAlgorithm::isBreak;
    using VoAlgorithm::setInputChanged;
    using VoAlgorithm::setUninitialized;

protected:
    bool checkPreConditionsInit() const override { return preInit; }
    void init() override
    {
        ++initCalls;
        if (throwInInit)
            throwInInit();
    }
    bool checkPostConditionsInit() const override { return postInit; }
    bool checkPreConditions() const override { return pre; }
    bool compute() override
    {
        ++computeCalls;
        if (throwInCompute)
            throwInCompute();
        return result;
    }
    bool checkPostConditions() const override { return post; }
};

// A description with two input types, an output, a parameter and a flag type.
class CProbeAccess : public VoAAlgorithm
{
public:
    using VoAAlgorithm::VoAAlgorithm;
    mutable int builds = 0;

protected:
    std::unique_ptr<InterfaceDescription> createInterfaceDescription(const VoAlgorithm& algorithm) const override
    {
        ++builds;
        auto description = std::make_unique<InterfaceDescription>(algorithm);
        description->DefineInputType(L"Image");
        description->DefineInput(L"Pixels", VoAlgorithm::RTTI);
        description->DefineInput(L"Mask", VoAlgorithm::RTTI);
        description->DefineInputType(L"Empty");
        description->DefineOutput(L"Result", VoAlgorithm::VoExceptionNoOutputData::RTTI);
        description->DefineParameter(L"Radius", VoAlgorithm::RTTI);
        description->DefineFlagType(L"Mode");
        description->DefineFlag(L"Fast", CProbe::eFast);
        description->DefineFlag(L"Safe", CProbe::eSafe);
        return description;
    }
};

std::vector<std::string> g_conditions;
void captureCondition(const char*, int, const char* function, int severity)
{
    g_conditions.push_back(std::string(function) + "/" + std::to_string(severity));
}

class VoAlgorithmTest : public testing::Test
{
protected:
    void SetUp() override
    {
        g_conditions.clear();
        m_previous = BxConditionHandler::SetHandler(&captureCondition);
    }
    void TearDown() override { BxConditionHandler::SetHandler(m_previous); }

    CProbe probe;
    BxConditionHandler::Handler m_previous = nullptr;
};

constexpr auto kThrow = VoAlgorithm::eCF_ThrowExceptions;

}  // namespace

TEST_F(VoAlgorithmTest, InitRunsOnceAndComputeInitialisesFirst)
{
    EXPECT_FALSE(probe.IsInitialized());
    EXPECT_TRUE(probe.Compute());  // no Init before
    EXPECT_TRUE(probe.IsInitialized());
    EXPECT_TRUE(probe.IsCalculated());
    EXPECT_TRUE(probe.Init());     // already initialised: init() not called again
    EXPECT_EQ(probe.initCalls, 1);
    EXPECT_EQ(probe.GetException(), nullptr);
    EXPECT_NO_THROW(probe.checkOutputData());
}

TEST_F(VoAlgorithmTest, StateChangesOfInputChangedAndUninitialized)
{
    ASSERT_TRUE(probe.Compute());
    probe.setInputChanged();
    EXPECT_TRUE(probe.IsInitialized());
    EXPECT_FALSE(probe.IsCalculated());
    EXPECT_THROW(probe.checkOutputData(), VoAlgorithm::VoExceptionNoOutputData);
    ASSERT_TRUE(probe.Compute());
    EXPECT_EQ(probe.initCalls, 1);
    probe.setUninitialized();
    EXPECT_FALSE(probe.IsInitialized());
    EXPECT_FALSE(probe.IsCalculated());
    ASSERT_TRUE(probe.Compute());
    EXPECT_EQ(probe.initCalls, 2);
}

TEST_F(VoAlgorithmTest, ComputingACalculatedAlgorithmIsABrokenCondition)
{
    ASSERT_TRUE(probe.Compute());
    EXPECT_FALSE(probe.Compute());
    EXPECT_FALSE(probe.IsCalculated());
    EXPECT_EQ(probe.computeCalls, 1);
    ASSERT_EQ(g_conditions, std::vector<std::string>{"VoAlgorithm::Compute/2"});
    auto stored = std::dynamic_pointer_cast<const BxExceptionPreconditionViolation>(probe.GetException());
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->GetFunctionName(), "VoAlgorithm::Compute");
}

TEST_F(VoAlgorithmTest, BrokenConditionsAreReportedAndFailTheCall)
{
    probe.preInit = false;
    EXPECT_FALSE(probe.Init());
    EXPECT_FALSE(probe.IsInitialized());
    EXPECT_EQ(probe.initCalls, 0);
    EXPECT_NE(probe.GetException(), nullptr);

    probe.preInit = true;
    probe.postInit = false;
    EXPECT_THROW(probe.Init(kThrow), BxExceptionPreconditionViolation);
    EXPECT_EQ(probe.initCalls, 1);
    EXPECT_FALSE(probe.IsInitialized());

    probe.postInit = true;
    probe.pre = false;
    EXPECT_FALSE(probe.Compute());
    EXPECT_TRUE(probe.IsInitialized());
    EXPECT_EQ(probe.computeCalls, 0);

    probe.pre = true;
    probe.post = false;
    EXPECT_FALSE(probe.Compute());
    EXPECT_EQ(probe.computeCalls, 1);
    EXPECT_FALSE(probe.IsCalculated());
    EXPECT_EQ(g_conditions.size(), 4u);
    for (const std::string& c : g_conditions)
        EXPECT_EQ(c.back(), '2');
}

TEST_F(VoAlgorithmTest, FailuresAreStoredOrThrownByKind)
{
    // A framework exception is stored as its own clone...
    probe.throwInCompute = [] { BX_THROW(BxExceptionStream, "CProbe::compute", "disk"); };
    EXPECT_FALSE(probe.Compute());
    EXPECT_NE(std::dynamic_pointer_cast<const BxExceptionStream>(probe.GetException()), nullptr);
    // ...and rethrown as it is with flag 16.
    EXPECT_THROW(probe.Compute(kThrow), BxExceptionStream);

    // A standard exception is wrapped, keeping its text.
    probe.throwInCompute = [] { throw std::out_of_range("too far"); };
    EXPECT_FALSE(probe.Compute());
    auto wrapped = std::dynamic_pointer_cast<const BxExceptionStd>(probe.GetException());
    ASSERT_NE(wrapped, nullptr);
    EXPECT_EQ(wrapped->GetMessage(), "too far");
    EXPECT_THROW(probe.Compute(kThrow), BxExceptionStd);

    // Anything else is stored as a plain BxException, or passed on untouched.
    probe.throwInCompute = [] { throw 42; };
    EXPECT_FALSE(probe.Compute());
    EXPECT_NE(std::dynamic_pointer_cast<const BxException>(probe.GetException()), nullptr);
    EXPECT_THROW(probe.Compute(kThrow), int);

    // The next successful call empties the stored failure.
    probe.throwInCompute = nullptr;
    EXPECT_TRUE(probe.Compute());
    EXPECT_EQ(probe.GetException(), nullptr);
}

TEST_F(VoAlgorithmTest, AnInitialisationFailureInsideComputeIsHandledByCompute)
{
    probe.throwInInit = [] { throw std::runtime_error("no memory"); };
    EXPECT_FALSE(probe.Compute());
    EXPECT_FALSE(probe.IsInitialized());
    auto stored = std::dynamic_pointer_cast<const BxExceptionStd>(probe.GetException());
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->GetFunctionName(), "VoAlgorithm::Init");
    EXPECT_THROW(probe.Compute(kThrow), BxExceptionStd);
    EXPECT_EQ(probe.computeCalls, 0);
}

TEST_F(VoAlgorithmTest, AFalseComputationAndABreakLeaveTheAlgorithmNotCalculated)
{
    probe.result = false;
    EXPECT_FALSE(probe.Compute());
    EXPECT_FALSE(probe.IsCalculated());
    EXPECT_EQ(probe.GetException(), nullptr);

    EXPECT_FALSE(probe.isBreak());
    BxEvent stop;
    probe.SetBreakEvent(&stop);
    EXPECT_FALSE(probe.isBreak());
    stop.Set();
    EXPECT_TRUE(probe.isBreak());
    probe.SetBreakEvent(nullptr);
    EXPECT_FALSE(probe.isBreak());
}

TEST_F(VoAlgorithmTest, ExtensionsFlagsAndTypeInformation)
{
    EXPECT_EQ(probe.GetExtension("IAlgorithmAccess", false), nullptr);
    EXPECT_EQ(static_cast<const VoAlgorithm&>(probe).GetExtension("anything", false), nullptr);
    EXPECT_THROW(probe.GetExtension("IAlgorithmAccess", true), BxExceptionUnknownExtension);

    probe.AddFlags(BxFlags<VoAlgorithm::EFlags>(CProbe::eFast | CProbe::eSafe));
    EXPECT_TRUE(probe.IsFlagsSet(BxFlags<VoAlgorithm::EFlags>(CProbe::eFast | CProbe::eSafe)));
    EXPECT_FALSE(probe.IsFlagsSet(BxFlags<VoAlgorithm::EFlags>(CProbe::eFast | CProbe::eLoud)));
    EXPECT_TRUE(probe.IsOneFlagSet(BxFlags<VoAlgorithm::EFlags>(CProbe::eFast | CProbe::eLoud)));
    probe.RemoveFlags(BxFlags<VoAlgorithm::EFlags>(CProbe::eFast));
    EXPECT_EQ(probe.GetFlags().GetValue(), CProbe::eSafe);

    VoAlgorithm::VoExceptionNoOutputData noData(__FILE__, __LINE__, "CProbe::GetOutput");
    EXPECT_TRUE(noData.IsKindOf(VoAlgorithm::VoExceptionNoOutputData::RTTI));
    EXPECT_STREQ(noData.GetClassNameW(), L"VoAlgorithm::VoExceptionNoOutputData");
    auto clone = noData.Clone();
    EXPECT_NE(dynamic_cast<VoAlgorithm::VoExceptionNoOutputData*>(clone.get()), nullptr);
}

TEST_F(VoAlgorithmTest, DescriptionQueriesCheckEveryIndex)
{
    CProbeAccess access(probe);
    EXPECT_EQ(access.GetInputTypeCount(), 2u);
    EXPECT_STREQ(access.GetInputTypeName(0), L"Image");
    EXPECT_EQ(access.GetInputCount(0), 2u);
    EXPECT_EQ(access.GetInputCount(1), 0u);
    EXPECT_STREQ(access.GetInputName(0, 1), L"Mask");
    EXPECT_EQ(&access.GetInputRTTI(0, 0), &VoAlgorithm::RTTI);
    EXPECT_THROW(access.GetInputName(0, 2), BxException);  // index equal to the type's count
    EXPECT_THROW(access.GetInputName(1, 0), BxException);
    EXPECT_THROW(access.GetInputRTTI(2, 0), BxException);
    EXPECT_THROW(access.GetInputTypeName(2), BxException);
    EXPECT_THROW(access.GetInputCount(2), BxException);

    EXPECT_EQ(access.GetOutputCount(), 1u);
    EXPECT_STREQ(access.GetOutputName(0), L"Result");
    EXPECT_EQ(&access.GetOutputRTTI(0), &VoAlgorithm::VoExceptionNoOutputData::RTTI);
    EXPECT_THROW(access.GetOutputName(1), BxException);
    EXPECT_THROW(access.GetOutputRTTI(1), BxException);

    EXPECT_EQ(access.GetParameterCount(), 1u);
    EXPECT_STREQ(access.GetParameterName(0), L"Radius");
    EXPECT_THROW(access.GetParameterName(1), BxException);
    EXPECT_THROW(access.GetParameterRTTI(1), BxException);

    EXPECT_EQ(access.GetFlagTypeCount(), 1u);
    EXPECT_STREQ(access.GetFlagTypeName(0), L"Mode");
    EXPECT_EQ(access.GetFlagCount(0), 2u);
    EXPECT_STREQ(access.GetFlagName(0, 1), L"Safe");
    EXPECT_THROW(access.GetFlagName(0, 2), BxException);
    EXPECT_THROW(access.GetFlagCount(1), BxException);
    EXPECT_THROW(access.SetFlag(1, 0, true), BxException);

    EXPECT_FALSE(access.IsFlagSet(0, 1));
    access.SetFlag(0, 1, true);
    EXPECT_TRUE(access.IsFlagSet(0, 1));
    EXPECT_TRUE(probe.IsFlagsSet(BxFlags<VoAlgorithm::EFlags>(CProbe::eSafe)));
    access.SetFlag(0, 1, false);
    EXPECT_EQ(probe.GetFlags().GetValue(), 0u);
    EXPECT_EQ(access.builds, 1);  // built once, on first use
}

TEST_F(VoAlgorithmTest, TheBaseDescriptionIsEmptyAndDefinitionsNeedAnOpenGroup)
{
    VoAAlgorithm access(probe);
    EXPECT_EQ(access.GetInputTypeCount(), 0u);
    EXPECT_EQ(access.GetFlagTypeCount(), 0u);
    EXPECT_THROW(access.GetInputCount(0), BxException);

    VoAAlgorithm::InterfaceDescription description(probe);
    EXPECT_EQ(&description.GetAlgorithm(), &probe);
    EXPECT_THROW(description.DefineInput(L"x", VoAlgorithm::RTTI), BxException);
    EXPECT_THROW(description.DefineFlag(L"x", 1), BxException);
}
