#include "Ixor/FastInfoset/LongEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"
#include "Poco/NumberFormatter.h"
#include "Poco/NumberParser.h"
#include <limits>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const EMPTY_DATA   = "Illegal (empty) data for LongEncoding";
	const char* const VALUE_STRING = "Illegal value string for LongEncoding";
	const char* const SIZE_ENTRY   = "Illegal size entry for Ixor::Int64 value";
}


LongEncoding::LongEncoding():
	_values()
{
}


LongEncoding::LongEncoding(long value):
	_values(1, value)
{
}


LongEncoding::LongEncoding(const std::vector<long>& values):
	_values(values)
{
	if (_values.empty()) throw FISEncodingException(EMPTY_DATA);
}


LongEncoding::LongEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	parse(text, _values);
	if (_values.empty()) throw FISEncodingException(VALUE_STRING);
}


LongEncoding::~LongEncoding()
{
}


void LongEncoding::parse(const std::string& text, std::vector<long>& values)
{
	// Only canonical decimals come back unchanged from the formatter: no
	// plus sign, no leading zeros, no minus zero, no white space.
	EncodingSupport::parseList(text, values, [](const std::string& piece, std::string& canonical, long& value)
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
		value = static_cast<long>(parsed);
		return true;
	});
}


unsigned int LongEncoding::type() const
{
	return 5;
}


bool LongEncoding::merge(const Encoding& other)
{
	const LongEncoding* pOther = other.type() == type() ? dynamic_cast<const LongEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	EncodingSupport::appendCopy(_values, pOther->_values);
	return true;
}


void LongEncoding::write(BitStreamWriter& writer) const
{
	writeValues(writer, _values);
}


void LongEncoding::writeValues(BitStreamWriter& writer, const std::vector<long>& values)
{
	EncodingSupport::writeBigEndian(writer, values);
}


void LongEncoding::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(Int64), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	text.reserve(length*3);
	for (const unsigned char* const pEnd = p + length; p != pEnd; p += sizeof(Int64))
	{
		if (!text.empty()) text += ' ';
		Ixor::NumberFormatter::append(text, EncodingSupport::loadBigEndian<long>(p));
	}
}


void LongEncoding::decode(BitStreamReader& reader, std::vector<long>& values)
{
	values.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(Int64), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	EncodingSupport::appendFromBigEndian(p, length/sizeof(Int64), values);
}


Ixor::AutoPtr<Encoding> LongEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<LongEncoding> pEncoding(new LongEncoding);
	decode(reader, pEncoding->_values);
	pEncoding->createContent();
	return pEncoding;
}


Int32 LongEncoding::check(const std::string& text)
{
	std::vector<long> values;
	parse(text, values);
	return EncodingSupport::octetCount(values.size()*sizeof(Int64));
}


void LongEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	// As LongEncoding(text).write(writer), without the heap object.
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	std::vector<long> values;
	parse(text, values);
	if (values.empty()) throw FISEncodingException(VALUE_STRING);
	writeValues(writer, values);
}


DecodeMethod LongEncoding::decodeMethod() const
{
	return &LongEncoding::decode;
}


CheckMethod LongEncoding::checkMethod() const
{
	return &LongEncoding::check;
}


EncodeMethod LongEncoding::encodeMethod() const
{
	return &LongEncoding::encode;
}


void LongEncoding::handle(FISContentHandler* pHandler) const
{
	if (!pHandler) return;
	for (long value: _values) pHandler->encodedData(value);
}


void LongEncoding::createContent()
{
	_content.clear();
	for (std::size_t i = 0; i < _values.size(); ++i)
	{
		if (i) _content += ' ';
		Ixor::NumberFormatter::append(_content, _values[i]);
	}
}


} } // namespace Ixor::FastInfoset
