#include <vobase/streams/vostreamreadasciifile.h>

VoStreamReadASCIIFile::VoStreamReadASCIIFile(const CString& path) : m_file(path)
{
}

VoStreamReadASCIIFile::VoStreamReadASCIIFile(VoFileSystem::ESpecialDirectory directory, const CString& name)
    : m_file(directory, name)
{
}

bool VoStreamReadASCIIFile::read(char& c)
{
    return m_file.ReadBuffer(&c, 1) == 0;
}
