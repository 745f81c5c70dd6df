#include "Ixor/FastInfoset/BoolEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const EMPTY_DATA   = "Illegal (empty) data for BoolEncoding";
	const char* const VALUE_STRING = "Illegal value string for BoolEncoding";
	const char* const UNUSED_COUNT = "Illegal unused bit count for boolean value";


	std::size_t readBooleans(BitStreamReader& reader, std::string& scratch, const unsigned char*& p)
		/// Reads one boolean string; returns the number of values, whose
		/// bits start at bit 4 of p[0].
	{
		unsigned long length = 0;
		Decoder::nonEmptyStringLength(reader, length);
		p = EncodingSupport::readOctets(reader, length, scratch);
		const std::size_t bits = static_cast<std::size_t>(length)*8;
		const std::size_t unused = p[0] >> 4;
		// A count beyond what the octets hold would take bits from outside
		// the string.
		if (unused + 4 > bits) throw FISEncodingException(UNUSED_COUNT);
		return bits - unused - 4;
	}


	inline bool bitAt(const unsigned char* p, std::size_t i)
		/// Value i of a boolean string.
	{
		const std::size_t bit = i + 4;
		return (p[bit >> 3] & Utility::revertedPow2[bit & 7]) != 0;
	}
}


const std::string BoolEncoding::VAL_TRUE("true");
const std::string BoolEncoding::VAL_FALSE("false");


BoolEncoding::BoolEncoding():
	_values()
{
}


BoolEncoding::BoolEncoding(bool value):
	_values(1, value)
{
}


BoolEncoding::BoolEncoding(const std::vector<bool>& values):
	_values(values)
{
	if (_values.empty()) throw FISEncodingException(EMPTY_DATA);
}


BoolEncoding::BoolEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	parse(text, _values);
	if (_values.empty()) throw FISEncodingException(VALUE_STRING);
}


BoolEncoding::~BoolEncoding()
{
}


void BoolEncoding::parse(const std::string& text, std::vector<bool>& values)
{
	EncodingSupport::parseList(text, values, [](const std::string& piece, std::string&, bool& value)
	{
		if (piece == VAL_TRUE) value = true;
		else if (piece == VAL_FALSE) value = false;
		else return false;
		return true;
	});
}


unsigned int BoolEncoding::type() const
{
	return 6;
}


bool BoolEncoding::merge(const Encoding& other)
{
	const BoolEncoding* pOther = other.type() == type() ? dynamic_cast<const BoolEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	EncodingSupport::appendCopy(_values, pOther->_values);
	return true;
}


void BoolEncoding::write(BitStreamWriter& writer) const
{
	writeValues(writer, _values);
}


void BoolEncoding::writeValues(BitStreamWriter& writer, const std::vector<bool>& values)
{
	const std::size_t count = values.size();
	Encoder::nonEmptyStringLength(writer, (count + 4 + 7)/8);
	unsigned int unused = (count + 4) % 8;
	if (unused != 0) unused = 8 - unused;

	// The count and the bits are packed into whole octets; the last one is
	// padded with 0 bits, which ends the string on an octet boundary.
	char buffer[1024];
	std::size_t used = 0;
	unsigned int octet = unused;
	int filled = 4;
	for (bool value: values)
	{
		octet = (octet << 1) | (value ? 1u : 0u);
		if (++filled == 8)
		{
			buffer[used++] = static_cast<char>(octet);
			octet = 0;
			filled = 0;
			if (used == sizeof(buffer))
			{
				writer.write(buffer, used);
				used = 0;
			}
		}
	}
	if (filled != 0) buffer[used++] = static_cast<char>(octet << (8 - filled));
	writer.write(buffer, used);
}


void BoolEncoding::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	std::string scratch;
	const unsigned char* p = nullptr;
	const std::size_t count = readBooleans(reader, scratch, p);
	text.reserve(count*6);
	for (std::size_t i = 0; i < count; ++i)
	{
		if (i) text += ' ';
		text += bitAt(p, i) ? VAL_TRUE : VAL_FALSE;
	}
}


void BoolEncoding::decode(BitStreamReader& reader, std::vector<bool>& values)
{
	values.clear();
	std::string scratch;
	const unsigned char* p = nullptr;
	const std::size_t count = readBooleans(reader, scratch, p);
	values.resize(count);
	for (std::size_t i = 0; i < count; ++i) values[i] = bitAt(p, i);
}


Ixor::AutoPtr<Encoding> BoolEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<BoolEncoding> pEncoding(new BoolEncoding);
	decode(reader, pEncoding->_values);
	// As building the value from an empty vector would.
	if (pEncoding->_values.empty()) throw FISEncodingException(EMPTY_DATA);
	pEncoding->createContent();
	return pEncoding;
}


Int32 BoolEncoding::check(const std::string& text)
{
	std::vector<bool> values;
	parse(text, values);
	return EncodingSupport::octetCount((values.size() + 7)/8);
}


void BoolEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	// As BoolEncoding(text).write(writer), without the heap object.
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	std::vector<bool> values;
	parse(text, values);
	if (values.empty()) throw FISEncodingException(VALUE_STRING);
	writeValues(writer, values);
}


DecodeMethod BoolEncoding::decodeMethod() const
{
	return &BoolEncoding::decode;
}


CheckMethod BoolEncoding::checkMethod() const
{
	return &BoolEncoding::check;
}


EncodeMethod BoolEncoding::encodeMethod() const
{
	return &BoolEncoding::encode;
}


void BoolEncoding::handle(FISContentHandler* pHandler) const
{
	if (!pHandler) return;
	for (bool value: _values) pHandler->encodedData(value);
}


void BoolEncoding::createContent()
{
	_content.clear();
	for (std::size_t i = 0; i < _values.size(); ++i)
	{
		if (i) _content += ' ';
		_content += _values[i] ? VAL_TRUE : VAL_FALSE;
	}
}


} } // namespace Ixor::FastInfoset
