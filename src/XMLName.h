//
// XMLName.h
//
// Library: FastInfoset
// Module:  FastInfosetWriter
//
// Whether a string is an XML name: the names of elements, attributes,
// processing-instruction targets, notations and entities, and (without
// colon) namespace prefixes. Internal: this header is not installed.
//


#ifndef FastInfoset_XMLName_INCLUDED
#define FastInfoset_XMLName_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Poco/UTF8Encoding.h"
#include <string>


namespace Ixor {
namespace FastInfoset {
namespace XMLName {


inline bool isStartChar(int c)
	/// The characters that may begin a name, the colon aside.
{
	if (c < 0x80) return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
	return (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xF6) || (c >= 0xF8 && c <= 0x2FF)
		|| (c >= 0x370 && c <= 0x37D) || (c >= 0x37F && c <= 0x1FFF) || (c >= 0x200C && c <= 0x200D)
		|| (c >= 0x2070 && c <= 0x218F) || (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF)
		|| (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0xEFFFF);
}


inline bool isChar(int c)
	/// The characters that may follow the first one, the colon aside.
{
	if (c < 0x80) return isStartChar(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
	return isStartChar(c) || c == 0xB7 || (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}


inline bool isName(const std::string& name, bool colonAllowed)
	/// Whether name, in UTF-8, is an XML name; without colonAllowed, one
	/// without colon (a name that can be a namespace prefix).
{
	static const Ixor::UTF8Encoding utf8;
	const unsigned char* p = reinterpret_cast<const unsigned char*>(name.data());
	const unsigned char* const pEnd = p + name.size();
	bool first = true;
	while (p != pEnd)
	{
		int c = *p;
		int length = 1;
		if (c >= 0x80)
		{
			length = utf8.sequenceLength(p, static_cast<int>(pEnd - p));
			if (length <= 0 || length > pEnd - p) return false;
			c = utf8.queryConvert(p, length);
			if (c < 0) return false;
		}
		if (c == ':' ? !colonAllowed : !(first ? isStartChar(c) : isChar(c))) return false;
		first = false;
		p += length;
	}
	return !first;
}


} } } // namespace Ixor::FastInfoset::XMLName


#endif // FastInfoset_XMLName_INCLUDED
