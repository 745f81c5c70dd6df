//
// TestSupport.h
//
// Helpers shared by the tests: hexadecimal octets, bit strings, exception
// messages, documents written with the default settings, and XML files
// read by the host's parser.
//


#ifndef FastInfoset_TestSupport_INCLUDED
#define FastInfoset_TestSupport_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Poco/SAX/ContentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include <cctype>
#include <functional>
#include <istream>
#include <string>
#include <typeinfo>
#include <vector>


namespace Ixor {
namespace FastInfoset {
class FastInfosetWriter;
} }


namespace TestSupport {


inline std::string toHex(const std::string& octets)
	/// Lower-case hexadecimal, two digits per octet, no separators.
{
	static const char DIGITS[] = "0123456789abcdef";
	std::string hex;
	for (unsigned char c: octets)
	{
		hex += DIGITS[c >> 4];
		hex += DIGITS[c & 15];
	}
	return hex;
}


inline std::string fromHex(const std::string& hex)
	/// Octets from hexadecimal digits; spaces are ignored.
{
	std::string octets;
	int high = -1;
	for (char c: hex)
	{
		if (c == ' ') continue;
		int digit = std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10;
		if (high < 0) high = digit;
		else
		{
			octets += static_cast<char>(high * 16 + digit);
			high = -1;
		}
	}
	return octets;
}


inline std::string fromBits(const std::string& bits)
	/// Octets from a string of '0' and '1' (other characters ignored); the
	/// last octet is padded with 0 bits.
{
	std::string octets;
	int count = 0;
	unsigned char octet = 0;
	for (char c: bits)
	{
		if (c != '0' && c != '1') continue;
		octet = static_cast<unsigned char>((octet << 1) | (c == '1'));
		if (++count == 8)
		{
			octets += static_cast<char>(octet);
			count = 0;
			octet = 0;
		}
	}
	if (count) octets += static_cast<char>(octet << (8 - count));
	return octets;
}


template <class E, class F>
std::string messageOf(F f)
	/// The message of the E that f throws; "no exception" when it throws
	/// none, and the class name for any other Ixor::Exception.
{
	try
	{
		f();
	}
	catch (const E& exc)
	{
		return exc.message();
	}
	catch (const Ixor::Exception& exc)
	{
		return std::string("unexpected ") + exc.className() + ": " + exc.message();
	}
	return "no exception";
}


std::string writeDocument(const std::function<void(Ixor::FastInfoset::FastInfosetWriter&)>& events);
	/// The octets that a writer with the default settings writes for the
	/// events; they start and end the document themselves.


std::string fileContent(const std::string& path);
	/// The octets of the file, empty when it cannot be read.


std::vector<std::string> xmlFilesIn(const std::string& folder);
	/// The paths of the folder's .xml files, sorted.


void parseXML(std::istream& xml, Ixor::XML::ContentHandler* pContent, Ixor::XML::LexicalHandler* pLexical,
	Ixor::XML::DTDHandler* pDTD, bool stripWhitespace = false);
	/// Feeds the events of XML text to the handlers as the converter's
	/// parser reports them: the host's parser with namespaces and their
	/// prefixes, through the host's whitespace filter when whitespace is
	/// stripped (the converter then joins adjacent character data).


} // namespace TestSupport


#endif // FastInfoset_TestSupport_INCLUDED
