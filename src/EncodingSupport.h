//
// EncodingSupport.h
//
// Library: FastInfoset
// Module:  Encoding
//
// Helpers shared by the sources of the encoding classes: reading the
// octets of a value string, converting fixed-width values from and to
// big-endian octets, splitting and parsing value lists and collecting
// text. Internal: this header is not installed.
//


#ifndef FastInfoset_EncodingSupport_INCLUDED
#define FastInfoset_EncodingSupport_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/ByteOrder.h"
#include "Poco/NumberFormatter.h"
#include "Poco/NumberParser.h"
#include "Poco/StringTokenizer.h"
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <streambuf>
#include <string>
#include <type_traits>
#include <vector>


namespace Ixor {
namespace FastInfoset {
namespace EncodingSupport {


template <std::size_t N> struct Bits;
template <> struct Bits<2> { typedef UInt16 Type; };
template <> struct Bits<4> { typedef UInt32 Type; };
template <> struct Bits<8> { typedef UInt64 Type; };


template <class Traits, class Template, class = void>
struct ObjectOf
	/// The class of the objects that a template's decode() makes: the
	/// template itself, or Traits::Object where a class adds to it.
{
	typedef Template Type;
};


template <class Traits, class Template>
struct ObjectOf<Traits, Template, std::void_t<typename Traits::Object>>
{
	typedef typename Traits::Object Type;
};


inline const unsigned char* readOctets(BitStreamReader& reader, std::size_t length, std::string& scratch)
	/// The next length octets of an octet-aligned reader: in place when the
	/// reader holds them all, else copied into scratch. Nothing is allocated
	/// beyond what the input delivers, so a length field that claims more
	/// than the input holds ends in FISParseException, not in a huge buffer.
{
	const char* p = nullptr;
	if (!reader.readView(p, length))
	{
		if (!reader.read(scratch, length))
			throw FISParseException("Unexpected end of stream while reading octet string");
		p = scratch.data();
	}
	return reinterpret_cast<const unsigned char*>(p);
}


template <class E>
std::size_t readValueLength(BitStreamReader& reader, std::size_t width, const char* sizeMessage)
	/// Reads the length of a value string and checks it against the width
	/// of one value before any octet of the values is read.
{
	unsigned long length = 0;
	Decoder::nonEmptyStringLength(reader, length);
	if (length % width != 0) throw E(sizeMessage);
	return length;
}


template <class T>
T loadBigEndian(const unsigned char* p)
{
	typedef typename Bits<sizeof(T)>::Type UInt;
	UInt bits;
	std::memcpy(&bits, p, sizeof(T));
	bits = Poco::ByteOrder::fromBigEndian(bits);
	T value;
	std::memcpy(&value, &bits, sizeof(T));
	return value;
}


template <class T>
void writeBigEndian(BitStreamWriter& writer, const std::vector<T>& values)
	/// Writes the length of the value string and the values, big-endian,
	/// in chunks of whole octets.
{
	typedef typename Bits<sizeof(T)>::Type UInt;
	Encoder::nonEmptyStringLength(writer, values.size()*sizeof(T));
	char buffer[1024];
	const std::size_t perChunk = sizeof(buffer)/sizeof(T);
	const T* p = values.data();
	const T* const pEnd = p + values.size();
	while (p != pEnd)
	{
		const std::size_t count = std::min(perChunk, static_cast<std::size_t>(pEnd - p));
		char* pOut = buffer;
		for (const T* const pStop = p + count; p != pStop; ++p, pOut += sizeof(T))
		{
			UInt bits;
			std::memcpy(&bits, p, sizeof(T));
			bits = Poco::ByteOrder::toBigEndian(bits);
			std::memcpy(pOut, &bits, sizeof(T));
		}
		writer.write(buffer, static_cast<std::size_t>(pOut - buffer));
	}
}


template <class T, class Convert>
void parseList(const std::string& text, std::vector<T>& values, Convert convert)
	/// Splits text at every single space, keeping empty pieces, and converts
	/// each piece with convert(piece, scratch, value). The first refused
	/// piece leaves values empty.
{
	values.clear();
	Ixor::StringTokenizer tokens(text, " ");
	values.reserve(tokens.count());
	std::string scratch;
	for (const std::string& piece: tokens)
	{
		T value;
		if (!convert(piece, scratch, value))
		{
			values.clear();
			return;
		}
		values.push_back(value);
	}
}


template <class T>
typename std::enable_if<std::is_integral<T>::value, bool>::type
parseNumber(const std::string& piece, std::string& canonical, T& value)
	/// A canonical decimal of a value of T: no plus sign, no leading zeros,
	/// no minus zero, no white space. Only such text comes back unchanged
	/// from the formatter.
{
	Int64 parsed = 0;
	if (!piece.empty() && piece[0] == '-')
	{
		// The host's signed parser negates through a double and so loses
		// the low digits of values below -2^53; the magnitude is parsed
		// unsigned instead. The round trip below still admits only
		// canonical text.
		canonical.assign(piece, 1, std::string::npos);
		UInt64 magnitude = 0;
		const UInt64 limit = UInt64(1) << 63;
		if (!Ixor::NumberParser::tryParseUnsigned64(canonical, magnitude) || magnitude > limit) return false;
		parsed = magnitude == limit ? std::numeric_limits<Int64>::min() : -static_cast<Int64>(magnitude);
	}
	else if (!Ixor::NumberParser::tryParse64(piece, parsed)) return false;
	canonical.clear();
	Ixor::NumberFormatter::append(canonical, parsed);
	if (canonical != piece) return false;
	if (parsed < std::numeric_limits<T>::min() || parsed > std::numeric_limits<T>::max()) return false;
	value = static_cast<T>(parsed);
	return true;
}


template <class T>
typename std::enable_if<std::is_integral<T>::value>::type
appendNumber(std::string& text, T value)
{
	Ixor::NumberFormatter::append(text, value);
}


template <class T>
typename std::enable_if<std::is_floating_point<T>::value>::type
appendNumber(std::string& text, T value)
	/// The XML Schema form of a float or double. The host's formatter gives
	/// one for finite values but writes "nan", "inf" and "-inf", and "0"
	/// for minus zero.
{
	if (std::isfinite(value) && value != 0) Ixor::NumberFormatter::append(text, value);
	else if (std::isnan(value)) text += "NaN";
	else if (std::isinf(value)) text += value < 0 ? "-INF" : "INF";
	else text += std::signbit(value) ? "-0" : "0";
}


inline bool parseNumber(const std::string& piece, std::string& canonical, double& value)
	/// A number given back unchanged by appendNumber(), which writes the
	/// text of a double: every text produced is accepted again, the values
	/// without digits included.
{
	if (piece == "NaN") value = std::numeric_limits<double>::quiet_NaN();
	else if (piece == "INF") value = std::numeric_limits<double>::infinity();
	else if (piece == "-INF") value = -std::numeric_limits<double>::infinity();
	else
	{
		if (!Ixor::NumberParser::tryParseFloat(piece, value)) return false;
		canonical.clear();
		appendNumber(canonical, value);
		return canonical == piece;
	}
	return true;
}


template <class T>
void appendCopy(std::vector<T>& to, const std::vector<T>& from)
	/// Appends from to to; merging a value with itself doubles it.
{
	if (&to == &from)
	{
		const std::size_t count = to.size();
		to.resize(2*count);
		std::copy_n(to.begin(), count, to.begin() + count);
	}
	else to.insert(to.end(), from.begin(), from.end());
}


inline Int32 octetCount(std::size_t count)
	/// A check score; texts beyond 2 GB saturate rather than wrap.
{
	return count > static_cast<std::size_t>(std::numeric_limits<Int32>::max())
		? std::numeric_limits<Int32>::max() : static_cast<Int32>(count);
}


class StringAppendBuf: public std::streambuf
	/// An output stream buffer that appends to a caller-owned string, so
	/// that the host's text encoders write straight into the result.
{
public:
	explicit StringAppendBuf(std::string& str):
		_str(str)
	{
	}

protected:
	int_type overflow(int_type c) override
	{
		if (!traits_type::eq_int_type(c, traits_type::eof())) _str.push_back(traits_type::to_char_type(c));
		return traits_type::not_eof(c);
	}

	std::streamsize xsputn(const char* s, std::streamsize n) override
	{
		_str.append(s, static_cast<std::size_t>(n));
		return n;
	}

private:
	std::string& _str;
};


} } } // namespace Ixor::FastInfoset::EncodingSupport


#endif // FastInfoset_EncodingSupport_INCLUDED
