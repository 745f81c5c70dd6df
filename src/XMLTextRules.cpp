#include "XMLTextRules.h"
#include "Poco/UTF8Encoding.h"
#include <cstdint>
#include <cstring>


namespace Ixor {
namespace FastInfoset {


const std::size_t XMLTextRules::ALL_VALID = std::string::npos;
const std::string XMLTextRules::XML_NAMESPACE("http://www.w3.org/XML/1998/namespace");
const std::string XMLTextRules::XMLNS_NAMESPACE("http://www.w3.org/2000/xmlns/");


namespace
{
	enum NameClass
	{
		NOT_IN_NAMES = 0,
		NAME_START = 1,   // may start a name (and continue one)
		NAME_PART = 2     // may continue a name only
	};


	constexpr int nameClass(int c)
	{
		if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':') return NAME_START;
		if ((c >= '0' && c <= '9') || c == '-' || c == '.') return NAME_PART;
		if (c < 0xC0) return c == 0xB7 ? NAME_PART : NOT_IN_NAMES;
		if (c <= 0x2FF) return c == 0xD7 || c == 0xF7 ? NOT_IN_NAMES : NAME_START;
		if (c <= 0x36F) return NAME_PART;
		if (c <= 0x1FFF) return c == 0x37E ? NOT_IN_NAMES : NAME_START;
		if (c == 0x200C || c == 0x200D) return NAME_START;
		if (c == 0x203F || c == 0x2040) return NAME_PART;
		if ((c >= 0x2070 && c <= 0x218F) || (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF)) return NAME_START;
		if ((c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0xEFFFF)) return NAME_START;
		return NOT_IN_NAMES;
	}


	int nextCharacter(const unsigned char* p, std::size_t available, std::size_t& length)
		/// The code point that starts at p and its length in octets; -1 for
		/// an invalid or incomplete sequence. The host's decoder refuses
		/// overlong forms, surrogates and values past U+10FFFF.
	{
		static const Ixor::UTF8Encoding UTF8;
		const unsigned char lead = *p;
		length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
		if (length == 1) return lead;
		if (length > available) return -1;
		return UTF8.queryConvert(p, static_cast<int>(length));
	}


	bool isCharacter(int c)
	{
		return c >= 0x20 ? (c <= 0xD7FF || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF))
			: (c == 0x9 || c == 0xA || c == 0xD);
	}


	struct ASCIINameClasses
		/// nameClass() of each ASCII character, looked up: names are mostly
		/// ASCII, and every name of a document is checked where it is used.
	{
		constexpr ASCIINameClasses(): of()
		{
			for (int c = 0; c < 0x80; ++c) of[c] = static_cast<unsigned char>(nameClass(c));
		}

		unsigned char of[0x80];
	};

	constexpr ASCIINameClasses ASCII_NAME_CLASSES;


	bool isNameWith(const std::string& name, bool colons)
	{
		const unsigned char* p = reinterpret_cast<const unsigned char*>(name.data());
		const unsigned char* const end = p + name.size();
		if (p == end) return false;
		bool first = true;
		while (p != end)
		{
			std::size_t length = 1;
			const int c = *p < 0x80 ? *p : nextCharacter(p, static_cast<std::size_t>(end - p), length);
			const int kind = c < 0 ? NOT_IN_NAMES : c < 0x80 ? ASCII_NAME_CLASSES.of[c] : nameClass(c);
			if (kind == NOT_IN_NAMES || (first && kind != NAME_START) || (c == ':' && !colons)) return false;
			first = false;
			p += length;
		}
		return true;
	}
}


std::size_t XMLTextRules::invalidCharacter(const char* text, std::size_t length)
{
	const unsigned char* const begin = reinterpret_cast<const unsigned char*>(text);
	const unsigned char* const end = begin + length;
	const unsigned char* p = begin;
	while (p != end)
	{
		// Most text is printable ASCII: eight octets at a time, each of
		// which is below 0x80 and not below 0x20.
		if (end - p >= 8)
		{
			const std::uint64_t ONES = 0x0101010101010101ull;
			const std::uint64_t HIGHS = 0x8080808080808080ull;
			std::uint64_t word;
			std::memcpy(&word, p, 8);
			const std::uint64_t controls = (word - 0x20 * ONES) & ~word & HIGHS;
			if (((word & HIGHS) | controls) == 0)
			{
				p += 8;
				continue;
			}
		}
		if (*p >= 0x20 && *p < 0x80)
		{
			++p;
			continue;
		}
		std::size_t sequence = 0;
		if (!isCharacter(nextCharacter(p, static_cast<std::size_t>(end - p), sequence))) return static_cast<std::size_t>(p - begin);
		p += sequence;
	}
	return ALL_VALID;
}


bool XMLTextRules::isValidText(const std::string& text)
{
	return invalidCharacter(text.data(), text.size()) == ALL_VALID;
}


bool XMLTextRules::isName(const std::string& name)
{
	return isNameWith(name, true);
}


bool XMLTextRules::isNCName(const std::string& name)
{
	return isNameWith(name, false);
}


bool XMLTextRules::isPublicId(const std::string& id)
{
	static const char OTHERS[] = " \r\n-'()+,./:=?;!*#@$_%";
	for (char c: id)
	{
		const bool alphanumeric = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
		if (!alphanumeric && (c == '\0' || !std::strchr(OTHERS, c))) return false;
	}
	return true;
}


bool XMLTextRules::isSystemId(const std::string& id)
{
	return id.find('"') == std::string::npos && isValidText(id);
}


std::string XMLTextRules::shown(const std::string& text)
{
	static const std::size_t SHOWN_LENGTH = 40;
	static const char DIGITS[] = "0123456789ABCDEF";
	std::string result("\"");
	for (std::size_t i = 0; i < text.size() && i < SHOWN_LENGTH; ++i)
	{
		const unsigned char c = static_cast<unsigned char>(text[i]);
		if (c >= 0x20 && c < 0x7F && c != '\\')
		{
			result += static_cast<char>(c);
		}
		else
		{
			result += "\\x";
			result += DIGITS[c >> 4];
			result += DIGITS[c & 15];
		}
	}
	result += text.size() > SHOWN_LENGTH ? "\"..." : "\"";
	return result;
}


} } // namespace Ixor::FastInfoset
