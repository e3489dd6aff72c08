// Targets for the object model's readers: variants (binary and JSON),
// identifiers, semantic versions, parameter sets, graphs, chunks and the JSON
// reader itself.
#include "fuzztarget.h"

#include <vobase/graphs/vograph.h>
#include <vobase/graphs/vographnode.h>
#include <vobase/objects/voclassparameterset.h>
#include <vobase/objects/voparametermaps.h>
#include <vobase/objects/voparameterset.h>
#include <vobase/objects/vosemanticversion.h>
#include <vobase/objects/vouniqueidt.h>
#include <vobase/objects/vovariant.h>
#include <vobase/objects/vovariantserializable.h>

#include <bxbase/bxexception.h>
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwriteasciistringt.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/iserializable.h>
#include <bxbase/persistence/cjsondatareader.h>
#include <bxbase/persistence/cjsondatawriter.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>

namespace fuzz {

namespace {

// Runs `step`, which decodes what the library itself just encoded: a
// BxException there is a fault, not an answer to bad input.
template <class F>
void mustDecode(const char* what, F step)
{
    try {
        step();
    } catch (const BxException& e) {
        throw CFinding(std::string(what) + ": the library refused its own encoding: " + e.what());
    }
}

std::string textOf(const std::uint8_t* data, std::size_t size)
{
    return std::string(reinterpret_cast<const char*>(data), size);
}

// Every conversion and comparison a decoded value may meet.
void exerciseConversions(const BxVariant& v)
{
    const auto tryAs = [&](auto target) {
        try {
            (void)v.template GetAs<decltype(target)>();
        } catch (const BxException&) {
        }
    };
    tryAs(bool());
    tryAs(int());
    tryAs((long long)0);
    tryAs(long());
    tryAs(0u);
    tryAs(0.0f);
    tryAs(0.0);
    tryAs(char());
    tryAs((signed char)0);
    tryAs((unsigned char)0);
    tryAs(short());
    tryAs((unsigned short)0);
    tryAs(0ULL);
    tryAs(0UL);
    tryAs(std::string());
    tryAs(std::wstring());
    for (std::uint32_t tag = 0; tag <= BxVariant::eVT_Count; ++tag) {
        BxVariant converted = v;
        try {
            converted.ConvertTo(static_cast<BxVariant::EVariantType>(tag));
        } catch (const BxException&) {
        }
    }
    (void)(v == v);
    (void)(v < BxVariant(0));
    (void)(BxVariant(L"x") < v);
}

template <class T>
Bytes encode(const T& value)
{
    BxStreamWriteBinaryBuffer out;
    value.Serialize(out);
    return BytesOf(out);
}

template <class T>
Bytes seedOf(const T& value)
{
    return encode(value);
}

// The value kinds every variant seed set covers (1e30f and NaN once broke the
// integer conversions).
std::vector<BxVariant> sampleValues()
{
    return {BxVariant(),
            BxVariant(true),
            BxVariant(-7),
            BxVariant(1LL << 40),
            BxVariant(4000000000u),
            BxVariant(1e30f),
            BxVariant(std::numeric_limits<float>::quiet_NaN()),
            BxVariant(-2.5e300),
            BxVariant('q'),
            BxVariant(std::wstring(L"Gr\u00fc\u00dfe \U0001F600")),
            BxVariant((signed char)-100),
            BxVariant((unsigned char)200),
            BxVariant((short)-30000),
            BxVariant((unsigned short)60000),
            BxVariant(18446744073709551615ULL),
            BxVariant(std::string("narrow text"))};
}

}  // namespace

// --- variant: VoVariant's binary form -------------------------------------

void FuzzVariant(const std::uint8_t* data, std::size_t size)
{
    BxStreamReadBinaryBuffer in(data, size);
    VoVariant value;
    value.Serialize(in);
    exerciseConversions(value);
    const Bytes first = encode(value);
    VoVariant back;
    mustDecode("variant", [&] {
        BxStreamReadBinaryBuffer again(first.data(), first.size());
        back.Serialize(again);
    });
    ExpectSameBytes(first, encode(back), "variant");
}

void SeedsVariant(std::vector<Bytes>& out)
{
    for (const BxVariant& sample : sampleValues())
        out.push_back(seedOf(VoVariant(sample)));
}

// --- variant_json: VoVariantSerializable's persistence form ---------------

namespace {

std::string writeJson(const Persistence::ISerializable& object)
{
    Persistence::CJsonDataWriter writer;
    object.WriteTo(writer);
    return writer.ToString();
}

}  // namespace

void FuzzVariantJson(const std::uint8_t* data, std::size_t size)
{
    Persistence::CJsonDataReader reader(textOf(data, size));
    VoVariantSerializable value;
    value.ReadFrom(reader);
    exerciseConversions(value);
    const std::string first = writeJson(value);
    VoVariantSerializable back;
    mustDecode("variant_json", [&] {
        Persistence::CJsonDataReader again(first);
        back.ReadFrom(again);
    });
    ExpectSameBytes(BytesOf(first), BytesOf(writeJson(back)), "variant_json");
}

void SeedsVariantJson(std::vector<Bytes>& out)
{
    for (const BxVariant& sample : sampleValues()) {
        VoVariantSerializable value;
        static_cast<BxVariant&>(value) = sample;
        out.push_back(BytesOf(writeJson(value)));
    }
    out.push_back(BytesOf(R"({"UInt32VariantType":2,"Value":1e30})"));
}

// --- uniqueid: binary form and text forms ---------------------------------

namespace {

template <class T>
void uniqueIdFromText(const T& text)
{
    using Id = VoUniqueIdT<T>;
    (void)Id::IsValid(text);
    (void)Id::IsValid(text.c_str());
    const Id id(text);
    const Id fromPointer(text.c_str());
    Expect(id == fromPointer || text.find(typename T::value_type(0)) != T::npos,
           "uniqueid: the string and pointer forms parse differently");
    if (id.IsInvalid())
        return;
    const T first = static_cast<const T&>(id);
    Id back(nullptr);
    mustDecode("uniqueid text", [&] { back = first; });
    Expect(back == id, "uniqueid: the text form does not parse back to the identifier");
    ExpectSameBytes(encode(id), encode(back), "uniqueid text");
    Expect(static_cast<const T&>(back) == first, "uniqueid: the text form changed");
}

}  // namespace

void FuzzUniqueId(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return;
    const std::uint8_t form = data[0] % 3;
    ++data;
    --size;
    if (form == 0) {
        BxStreamReadBinaryBuffer in(data, size);
        VoUniqueIdT<std::wstring> id(nullptr);
        id.Serialize(in);
        const Bytes first = encode(id);
        VoUniqueIdT<std::wstring> back(nullptr);
        mustDecode("uniqueid", [&] {
            BxStreamReadBinaryBuffer again(first.data(), first.size());
            back.Serialize(again);
        });
        ExpectSameBytes(first, encode(back), "uniqueid");
        const std::wstring& text = back;
        Expect(VoUniqueIdT<std::wstring>(text) == id || id.IsInvalid(), "uniqueid: text form of a decoded identifier");
    } else if (form == 1) {
        uniqueIdFromText(textOf(data, size));
    } else {
        uniqueIdFromText(BxStringConvert::Utf8ToWideLossy(textOf(data, size)));
    }
}

void SeedsUniqueId(std::vector<Bytes>& out)
{
    VoUniqueIdT<std::string> id;
    Bytes binary{0};
    const Bytes body = encode(id);
    binary.insert(binary.end(), body.begin(), body.end());
    out.push_back(binary);
    const std::string text = static_cast<const std::string&>(id);
    out.push_back(BytesOf("\x01" + text));
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return char(std::tolower(c)); });
    out.push_back(BytesOf("\x02" + lower));
    out.push_back(BytesOf("\x01{" + text + "}"));
}

// --- semanticversion: text and JSON forms ---------------------------------

void FuzzSemanticVersion(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return;
    const std::uint8_t form = data[0] % 3;
    const std::string text = textOf(data + 1, size - 1);
    VoSemanticVersion version;
    if (form == 0) {
        (void)VoSemanticVersion::IsValid(text);
        (void)VoSemanticVersion::IsValid(text.c_str());
        version = text;
    } else if (form == 1) {
        const std::wstring wide = BxStringConvert::Utf8ToWideLossy(text);
        (void)VoSemanticVersion::IsValid(wide);
        version = wide;
    } else {
        Persistence::CJsonDataReader reader(text);
        version.ReadFrom(reader);
        const std::string first = writeJson(version);
        VoSemanticVersion back;
        mustDecode("semanticversion json", [&] {
            Persistence::CJsonDataReader again(first);
            back.ReadFrom(again);
        });
        ExpectSameBytes(BytesOf(first), BytesOf(writeJson(back)), "semanticversion json");
        return;
    }
    const std::string first = version.ToString();
    VoSemanticVersion back;
    mustDecode("semanticversion text", [&] { back = first; });
    ExpectSameBytes(BytesOf(first), BytesOf(back.ToString()), "semanticversion text");
    Expect(back == version, "semanticversion: the text form does not parse back to the version");
}

void SeedsSemanticVersion(std::vector<Bytes>& out)
{
    for (const char* text : {"1.2.3-beta.1", "4.5.6.7", "", "x.1", "4294967295.0.1-a-b"}) {
        out.push_back(BytesOf(std::string("\x00", 1) + text));
        out.push_back(BytesOf(std::string("\x01") + text));
    }
    out.push_back(BytesOf("\x02" + writeJson(VoSemanticVersion(1, 2, 3, "rc.1"))));
    out.push_back(BytesOf("\x02{\"Major\":1,\"Minor\":-2,\"Patch\":3,\"Label\":\"\"}"));
}

// --- parameterset: VoParameterSet, VoClassParameterSet, the maps ---------

namespace {

// The parameters in key order, each as (name, variant binary form): the
// encoding with the hash map's iteration order taken out.
Bytes canonicalParameters(const VoParameterMaps::Map& parameters)
{
    std::vector<const VoParameterMaps::Map::value_type*> entries;
    for (const auto& entry : parameters)
        entries.push_back(&entry);
    std::sort(entries.begin(), entries.end(), [](auto* a, auto* b) { return a->first < b->first; });
    BxStreamWriteBinaryBuffer out;
    for (const auto* entry : entries) {
        out << entry->first;
        VoVariant::WriteValue(out, entry->second);
    }
    return BytesOf(out);
}

template <class Set>
void parameterSetRoundTrip(const std::uint8_t* data, std::size_t size)
{
    BxStreamReadBinaryBuffer in(data, size);
    Set set;
    set.Serialize(in);
    BxArray<CStringW> keys;
    set.GetParameterKeys(keys);
    for (const CStringW& key : keys) {
        BxVariant value;
        Expect(set.GetParameter(key, value) != 0, "parameterset: a listed key has no parameter");
        exerciseConversions(value);
        (void)set.IsInLimits(key, value);
    }
    const Bytes first = encode(set);
    Set back;
    mustDecode("parameterset", [&] {
        BxStreamReadBinaryBuffer again(first.data(), first.size());
        back.Serialize(again);
    });
    Expect(encode(back).size() == first.size(), "parameterset: re-encoding changed the size");
    ExpectSameBytes(canonicalParameters(set.GetParameters()), canonicalParameters(back.GetParameters()),
                    "parameterset");
}

}  // namespace

void FuzzParameterSet(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return;
    const std::uint8_t form = data[0] % 3;
    if (form == 0) {
        parameterSetRoundTrip<VoParameterSet>(data + 1, size - 1);
    } else if (form == 1) {
        parameterSetRoundTrip<VoClassParameterSet>(data + 1, size - 1);
    } else {
        BxStreamReadBinaryBuffer in(data + 1, size - 1);
        VoParameterMaps::Map parameters;
        VoParameterMaps::Read(in, parameters);
        BxStreamWriteBinaryBuffer out;
        VoParameterMaps::Write(out, parameters);
        const Bytes first = BytesOf(out);
        VoParameterMaps::Map back;
        mustDecode("parameterset maps", [&] {
            BxStreamReadBinaryBuffer again(first.data(), first.size());
            VoParameterMaps::Read(again, back);
        });
        ExpectSameBytes(canonicalParameters(parameters), canonicalParameters(back), "parameterset maps");
    }
}

void SeedsParameterSet(std::vector<Bytes>& out)
{
    VoParameterSet set;
    const auto samples = sampleValues();
    for (std::size_t i = 0; i < samples.size(); ++i)
        set.SetParameter(L"p" + std::to_wstring(i), samples[i]);
    VoClassParameterSet classSet;
    classSet.SetParameter(L"gain", BxVariant(2.5));
    classSet.SetParameter(L"name", BxVariant(L"camera"));
    for (std::uint8_t form = 0; form < 3; ++form) {
        Bytes seed{form};
        const Bytes body = form == 1 ? encode(classSet) : encode(set);
        seed.insert(seed.end(), body.begin(), body.end());
        out.push_back(seed);
    }
    out.push_back(Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 0xff, 0xff});  // a count the data cannot hold
}

// --- graph: VoGraph's binary form -------------------------------------------

void FuzzGraph(const std::uint8_t* data, std::size_t size)
{
    BxStreamReadBinaryBuffer in(data, size);
    VoGraph graph;
    graph.Serialize(in);
    const Bytes first = encode(graph);
    BxStreamWriteASCIIStringT<std::wstring> text;
    graph.Dump(text);
    graph.DumpDot(text, 1);
    graph.DumpDot(text, 0);
    VoGraph back;
    mustDecode("graph", [&] {
        BxStreamReadBinaryBuffer again(first.data(), first.size());
        back.Serialize(again);
    });
    ExpectSameBytes(first, encode(back), "graph");
    Expect(graph.CreateIndices() == back.GetCount(), "graph: node count changed");
}

void SeedsGraph(std::vector<Bytes>& out)
{
    VoGraph graph;
    std::vector<VoGraphNode*> nodes;
    for (int i = 0; i < 5; ++i) {
        nodes.push_back(new VoGraphNode());
        graph.InsertNode(nodes.back());
    }
    nodes[0]->AddConnection(*nodes[1], 2.5f);
    nodes[1]->AddConnection(*nodes[2], 1.0f);
    nodes[2]->AddConnection(*nodes[2], std::numeric_limits<float>::quiet_NaN());
    nodes[3]->AddConnection(*nodes[0], -1e30f);
    nodes[4]->AddConnection(*nodes[1], 0.0f);
    out.push_back(encode(graph));
    graph.RemoveNode(*nodes[1]);  // indices no longer dense
    out.push_back(encode(graph));
    out.push_back(encode(VoGraph()));
}

// --- chunk: ReadChunk of any registered class ------------------------------

void FuzzChunk(const std::uint8_t* data, std::size_t size)
{
    BxStreamReadBinaryBuffer in(data, size);
    const std::unique_ptr<ISerializable> object = in.ReadChunk();
    BxStreamWriteBinaryBuffer out;
    out.WriteChunk(*object);
    const Bytes first = BytesOf(out);
    std::unique_ptr<ISerializable> back;
    mustDecode("chunk", [&] {
        BxStreamReadBinaryBuffer again(first.data(), first.size());
        back = again.ReadChunk();
    });
    BxStreamWriteBinaryBuffer second;
    second.WriteChunk(*back);
    ExpectSameBytes(first, BytesOf(second), "chunk");
}

void SeedsChunk(std::vector<Bytes>& out)
{
    for (const BxVariant& sample : {BxVariant(3), BxVariant(L"chunk"), BxVariant(1e30f)}) {
        BxStreamWriteBinaryBuffer chunk;
        chunk.WriteChunk(VoVariant(sample));
        out.push_back(BytesOf(chunk));
    }
    VoGraph graph;
    auto* a = new VoGraphNode();
    auto* b = new VoGraphNode();
    graph.InsertNode(a);
    graph.InsertNode(b);
    a->AddConnection(*b, 0.5f);
    BxStreamWriteBinaryBuffer chunk;
    chunk.WriteChunk(graph);
    out.push_back(BytesOf(chunk));
    BxStreamWriteBinaryBuffer other;  // a registered class that has no binary form
    other << std::wstring(L"VoMessage") << 0u;
    out.push_back(BytesOf(other));
}

// --- json: the JSON reader on its own -------------------------------------

namespace {

// Reads a fixed set of keys with the first entry type that fits, and writes
// them back the same way; nested objects recurse through ReadObject.
class CJsonProbe : public Persistence::ISerializable
{
public:
    std::string GetTypeName() const override { return "CJsonProbe"; }

    void ReadFrom(const Persistence::IDataReader& reader) override
    {
        for (const char* key : c_keys)
            if (reader.Has(key))
                probe(reader, key);
    }

    void WriteTo(Persistence::IDataWriter& writer) const override
    {
        for (const SEntry& e : m_entries) {
            switch (e.kind) {
            case eBool: writer.Write(e.key, e.flag); break;
            case eUnsigned: writer.Write(e.key, e.unsignedValue); break;
            case eSigned: writer.Write(e.key, e.signedValue); break;
            case eDouble: writer.Write(e.key, e.doubleValue); break;
            case eString: writer.Write(e.key, e.text); break;
            case eObject: writer.WriteObject(e.key, *e.nested); break;
            }
        }
    }

private:
    static constexpr const char* c_keys[] = {"a", "b", "Value", "UInt32VariantType", "Major", "Label", "Inner", ""};
    enum EKind { eBool, eUnsigned, eSigned, eDouble, eString, eObject };
    struct SEntry
    {
        std::string key;
        EKind kind;
        bool flag = false;
        unsigned long long unsignedValue = 0;
        long long signedValue = 0;
        double doubleValue = 0;
        std::string text;
        std::shared_ptr<CJsonProbe> nested;
    };

    template <class T>
    static bool tryRead(const Persistence::IDataReader& reader, const std::string& key, T& value)
    {
        try {
            return reader.Read(key, value);
        } catch (const Persistence::CException&) {
            return false;
        }
    }

    void probe(const Persistence::IDataReader& reader, const std::string& key)
    {
        // the narrow kinds too, for their range checks
        char c;
        signed char sc;
        unsigned char uc;
        short s;
        unsigned short us;
        int i;
        unsigned int u;
        float f;
        std::wstring wide;
        tryRead(reader, key, c);
        tryRead(reader, key, sc);
        tryRead(reader, key, uc);
        tryRead(reader, key, s);
        tryRead(reader, key, us);
        tryRead(reader, key, i);
        tryRead(reader, key, u);
        tryRead(reader, key, f);
        tryRead(reader, key, wide);

        SEntry e{key, eBool};
        if (tryRead(reader, key, e.flag)) {
        } else if (tryRead(reader, key, e.unsignedValue)) {
            e.kind = eUnsigned;
        } else if (tryRead(reader, key, e.signedValue)) {
            e.kind = eSigned;
        } else if (tryRead(reader, key, e.doubleValue)) {
            e.kind = eDouble;
        } else if (tryRead(reader, key, e.text)) {
            e.kind = eString;
        } else {
            auto nested = std::make_shared<CJsonProbe>();
            try {
                if (!reader.ReadObject(key, *nested))
                    return;
            } catch (const Persistence::CException&) {
                return;  // an array: nothing the reader reads
            }
            e.kind = eObject;
            e.nested = std::move(nested);
        }
        m_entries.push_back(std::move(e));
    }

    std::vector<SEntry> m_entries;
};

}  // namespace

void FuzzJson(const std::uint8_t* data, std::size_t size)
{
    const std::string text = textOf(data, size);
    try {
        Persistence::CJsonDataReader shallow(text, 4);
    } catch (const Persistence::CException&) {
    }
    Persistence::CJsonDataReader reader(text);
    CJsonProbe probe;
    probe.ReadFrom(reader);
    const std::string first = writeJson(probe);
    CJsonProbe back;
    mustDecode("json", [&] {
        Persistence::CJsonDataReader again(first);
        back.ReadFrom(again);
    });
    ExpectSameBytes(BytesOf(first), BytesOf(writeJson(back)), "json");
}

void SeedsJson(std::vector<Bytes>& out)
{
    Persistence::CJsonDataWriter writer;
    writer.Write("a", true);
    writer.Write("b", -12);
    writer.Write("Value", 2.5);
    writer.Write("UInt32VariantType", 18446744073709551615ULL);
    writer.Write("Label", std::wstring(L"Gr\u00fc\u00dfe"));
    writer.WriteObject("Inner", VoSemanticVersion(1, 2, 3, "x"));
    out.push_back(BytesOf(writer.ToString()));
    out.push_back(BytesOf(R"({"a":[1,{"b":2}],"b":null,"Value":1e400,"Major":3.0,"":{"Inner":{"a":"\u00e9"}}})"));
    // beyond the default depth: {"Inner":...} 300 levels deep
    std::string deep;
    for (int i = 0; i < 300; ++i)
        deep += "{\"Inner\":";
    deep += "1" + std::string(300, '}');
    out.push_back(BytesOf(deep));
}

}  // namespace fuzz
