#include "streamtestfiles.h"

#include <vobase/streams/vostreamreadasciifile.h>
#include <vobase/streams/vostreamwriteasciifile.h>

#include <bxbase/bxexceptionstream.h>

using namespace streamtest;

TEST(VoStreamWriteASCIIFile, WritesNarrowBytesAndWideTextAsAnsi)
{
    CTempDir dir;
    {
        VoStreamWriteASCIIFile out(dir.Wide("t.txt"));
        out << "n=" << 42 << '\n' << L"5\u20ac \u00e4 \u0416\n" << std::wstring();
    }
    const Bytes expected = {'n', '=', '4', '2', '\n', '5', 0x80, ' ', 0xE4, ' ', '?', '\n'};
    EXPECT_EQ(ReadAll(dir.Narrow("t.txt")), expected);
}

TEST(VoStreamWriteASCIIFile, LongWideTextKeepsOneBytePerCharacter)
{
    CTempDir dir;
    std::wstring text;
    for (int i = 0; i < 3000; ++i)
        text += (i % 3 == 0) ? L'\u0416' : static_cast<wchar_t>(L'a' + i % 26);
    {
        VoStreamWriteASCIIFile out(dir.Wide("long.txt"));
        out << text;
    }
    const Bytes file = ReadAll(dir.Narrow("long.txt"));
    ASSERT_EQ(file.size(), text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
        ASSERT_EQ(file[i], text[i] == L'\u0416' ? '?' : static_cast<unsigned char>(text[i])) << i;
}

TEST(VoStreamWriteASCIIFile, CompressedTextReadsBackThroughTheTextReader)
{
    CTempDir dir;
    {
        VoStreamWriteASCIIFile out(dir.Wide("c.txt"), VoStreamWriteBinaryFile::eAM_Create, VoStreamWriteBinaryFile::eCM_ZIP);
        for (int i = 0; i < 500; ++i)
            out << "row " << i << " " << (i % 2 == 0) << "\r\n";
        EXPECT_EQ(std::wstring(out.GetFilename()), dir.Wide("c.txt"));
    }
    EXPECT_EQ(ReadAll(dir.Narrow("c.txt"))[0], 'C');  // the archive header
    VoStreamReadASCIIFile in(dir.Wide("c.txt"));
    for (int i = 0; i < 500; ++i) {
        std::string word;
        int n = -1;
        bool even = false;
        in >> word >> n >> even;
        ASSERT_EQ(word, "row");
        ASSERT_EQ(n, i);
        ASSERT_EQ(even, i % 2 == 0);
    }
    std::string rest;
    EXPECT_THROW(in >> rest, BxExceptionStream);
    EXPECT_TRUE(in.IsEndOfStream());
}

TEST(VoStreamWriteASCIIFile, AppendsAndReadsLines)
{
    CTempDir dir;
    { VoStreamWriteASCIIFile out(dir.Wide("l.txt")); out << "one\n"; }
    { VoStreamWriteASCIIFile out(dir.Wide("l.txt"), VoStreamWriteBinaryFile::eAM_Append); out << "two\r\n"; }
    VoStreamReadASCIIFile in(dir.Wide("l.txt"));
    std::string line;
    in >> VoStreamReadASCIIFile::Line(line);
    EXPECT_EQ(line, "one");
    in >> VoStreamReadASCIIFile::Line(line);
    EXPECT_EQ(line, "two");
}
