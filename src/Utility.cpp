#include "Ixor/FastInfoset/Utility.h"
#include "Ixor/FastInfoset/Converter.h"


namespace Ixor {
namespace FastInfoset {


const unsigned char Utility::pow2[8] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80};
const unsigned char Utility::revertedPow2[8] = {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01};
const unsigned char Utility::highBitMask[9] = {0x00, 0x80, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC, 0xFE, 0xFF};
const unsigned char Utility::lowBitMask[9] = {0x00, 0x01, 0x03, 0x07, 0x0F, 0x1F, 0x3F, 0x7F, 0xFF};


void Utility::convertToFIS(std::istream& in, std::ostream& out, int options)
{
	Converter::convertToFIS(in, out, options, 0);
}


void Utility::convertToXML(std::istream& in, std::ostream& out)
{
	Converter::convertToXML(in, out, 1);
}


} } // namespace Ixor::FastInfoset
