//
// ValueListEncodingImpl.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//
// The members of ValueListEncoding. Each list's source file specializes
// ValueListTraits for its list, includes this header and instantiates
// the template for its list. Internal: this header is not installed.
//
// A traits class provides:
//
//   TYPE                  the algorithm index
//   Object                optional: the class that decode() makes, when
//                         a class derives from the template
//   EMPTY_DATA, VALUE_STRING, SIZE_ENTRY
//                         the messages
//   WIDTH                 the length of a value string must be a multiple
//                         of it; SIZE_ENTRY is thrown otherwise
//   TEXT_PER_VALUE        characters to reserve per value of text
//   TextSizeException     what decoding to text throws for a bad length
//   countOf(p, length)    the number of values in the length octets at p,
//                         checked; throws FISEncodingException
//   load(p, i, value)     sets value to value i of the octets at p
//   appendTextAt(text, p, i)
//                         appends the text form of value i of the octets
//                         at p
//   writeValues(writer, values)
//                         the length and the octets of a non-empty list
//   octetsFor(count)      what check() reports for count values
//   parseValue(piece, scratch, value)
//                         one value of the text form, or false
//   appendText(text, value)
//                         appends the text form of one value
//


#ifndef FastInfoset_ValueListEncodingImpl_INCLUDED
#define FastInfoset_ValueListEncodingImpl_INCLUDED


#include "Ixor/FastInfoset/ValueListEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"
#include "Poco/NumberFormatter.h"
#include <limits>
#include <type_traits>
#include <utility>


namespace Ixor {
namespace FastInfoset {
namespace EncodingSupport {


template <class Traits, class X>
std::size_t readValueString(BitStreamReader& reader, std::string& scratch, const unsigned char*& p)
	/// Reads one value string, checking its length before any octet of the
	/// values is read; returns the number of values, which start at p.
{
	const std::size_t length = readValueLength<X>(reader, Traits::WIDTH, Traits::SIZE_ENTRY);
	p = readOctets(reader, length, scratch);
	return Traits::countOf(p, length);
}


template <std::size_t W>
struct FixedWidth
	/// The layout of lists of W octets per value.
{
	static constexpr std::size_t WIDTH = W;

	typedef FISEncodingException TextSizeException;

	static std::size_t countOf(const unsigned char*, std::size_t length)
	{
		return length/W;
	}

	static std::size_t octetsFor(std::size_t count)
	{
		return count*W;
	}
};


template <class T>
struct BigEndianNumbers: FixedWidth<sizeof(T)>
	/// The layout of the numeric lists: sizeof(T) big-endian octets per
	/// value (two's complement or IEEE 754, so the bits copy unchanged), and
	/// decimal text in the XML Schema forms.
{
	// The longest text of a value and its separator: a sign and one digit
	// more than digits10 for integers; a sign, the digits, the point and up
	// to five characters of exponent for floats.
	static constexpr std::size_t TEXT_PER_VALUE = std::numeric_limits<T>::is_integer
		? std::numeric_limits<T>::digits10 + 3 : std::numeric_limits<T>::max_digits10 + 8;

	static void load(const unsigned char* p, std::size_t i, T& value)
	{
		value = loadBigEndian<T>(p + i*sizeof(T));
	}

	static void appendTextAt(std::string& text, const unsigned char* p, std::size_t i)
	{
		appendText(text, loadBigEndian<T>(p + i*sizeof(T)));
	}

	static void writeValues(BitStreamWriter& writer, const std::vector<T>& values)
	{
		writeBigEndian(writer, values);
	}

	static bool parseValue(const std::string& piece, std::string& canonical, T& value)
	{
		return parseNumber(piece, canonical, value);
	}

	static void appendText(std::string& text, T value)
	{
		appendNumber(text, value);
	}
};


} // namespace EncodingSupport


template <class V, class T>
ValueListEncoding<V, T>::ValueListEncoding(T value):
	_values(1, value)
{
}


template <class V, class T>
ValueListEncoding<V, T>::ValueListEncoding(std::vector<T> values):
	_values(std::move(values))
{
	if (_values.empty()) throw FISEncodingException(Traits::EMPTY_DATA);
}


template <class V, class T>
ValueListEncoding<V, T>::ValueListEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(Traits::EMPTY_DATA);
	parse(text, _values);
	if (_values.empty()) throw FISEncodingException(Traits::VALUE_STRING);
}


template <class V, class T>
ValueListEncoding<V, T>::~ValueListEncoding()
{
}


template <class V, class T>
void ValueListEncoding<V, T>::parse(const std::string& text, std::vector<T>& values)
{
	EncodingSupport::parseList(text, values, [](const std::string& piece, std::string& scratch, T& value)
	{
		return Traits::parseValue(piece, scratch, value);
	});
}


template <class V, class T>
unsigned int ValueListEncoding<V, T>::type() const
{
	return Traits::TYPE;
}


template <class V, class T>
bool ValueListEncoding<V, T>::merge(const Encoding& other)
{
	const ValueListEncoding* pOther = other.type() == type() ? dynamic_cast<const ValueListEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	EncodingSupport::appendCopy(_values, pOther->_values);
	return true;
}


template <class V, class T>
void ValueListEncoding<V, T>::append(T value)
{
	_values.push_back(value);
}


template <class V, class T>
void ValueListEncoding<V, T>::clear()
{
	_values.clear();
	_content.clear();
}


template <class V, class T>
void ValueListEncoding<V, T>::write(BitStreamWriter& writer) const
{
	poco_assert(!_values.empty());
	Traits::writeValues(writer, _values);
}


template <class V, class T>
void ValueListEncoding<V, T>::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	std::string scratch;
	const unsigned char* p = nullptr;
	const std::size_t count = EncodingSupport::readValueString<Traits, typename Traits::TextSizeException>(reader, scratch, p);
	text.reserve(count*Traits::TEXT_PER_VALUE);
	for (std::size_t i = 0; i < count; ++i)
	{
		if (i) text += ' ';
		Traits::appendTextAt(text, p, i);
	}
}


template <class V, class T>
void ValueListEncoding<V, T>::decode(BitStreamReader& reader, std::vector<T>& values)
{
	values.clear();
	std::string scratch;
	const unsigned char* p = nullptr;
	const std::size_t count = EncodingSupport::readValueString<Traits, FISEncodingException>(reader, scratch, p);
	values.resize(count);
	for (std::size_t i = 0; i < count; ++i) Traits::load(p, i, values[i]);
}


template <class V, class T>
Ixor::AutoPtr<Encoding> ValueListEncoding<V, T>::decode(BitStreamReader& reader)
{
	std::vector<T> values;
	decode(reader, values);
	// Only a boolean string can hold no values; the constructor refuses
	// them as it refuses any empty vector.
	typedef typename EncodingSupport::ObjectOf<Traits, ValueListEncoding>::Type Object;
	Ixor::AutoPtr<Object> pEncoding(new Object(std::move(values)));
	pEncoding->createContent();
	return pEncoding;
}


template <class V, class T>
Int32 ValueListEncoding<V, T>::check(const std::string& text)
{
	std::vector<T> values;
	parse(text, values);
	return EncodingSupport::octetCount(Traits::octetsFor(values.size()));
}


template <class V, class T>
void ValueListEncoding<V, T>::encode(BitStreamWriter& writer, const std::string& text)
{
	// As constructing the list from text and writing it, without the heap
	// object.
	if (text.empty()) throw FISEncodingException(Traits::EMPTY_DATA);
	std::vector<T> values;
	parse(text, values);
	if (values.empty()) throw FISEncodingException(Traits::VALUE_STRING);
	Traits::writeValues(writer, values);
}


template <class V, class T>
DecodeMethod ValueListEncoding<V, T>::decodeMethod() const
{
	return &ValueListEncoding::decode;
}


template <class V, class T>
CheckMethod ValueListEncoding<V, T>::checkMethod() const
{
	return &ValueListEncoding::check;
}


template <class V, class T>
EncodeMethod ValueListEncoding<V, T>::encodeMethod() const
{
	return &ValueListEncoding::encode;
}


template <class V, class T>
void ValueListEncoding<V, T>::handle(FISContentHandler* pHandler) const
{
	if (!pHandler) return;
	for (typename std::vector<T>::const_reference value: _values) pHandler->encodedData(value);
}


template <class V, class T>
void ValueListEncoding<V, T>::createContent()
{
	_content.clear();
	_content.reserve(_values.size()*Traits::TEXT_PER_VALUE);
	for (std::size_t i = 0; i < _values.size(); ++i)
	{
		if (i) _content += ' ';
		Traits::appendText(_content, _values[i]);
	}
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_ValueListEncodingImpl_INCLUDED
