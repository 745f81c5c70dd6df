#include "Ixor/FastInfoset/FloatEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "EncodingSupport.h"
#include "Poco/NumberFormatter.h"
#include "Poco/NumberParser.h"
#include <limits>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const EMPTY_DATA   = "Illegal (empty) data for FloatEncoding";
	const char* const VALUE_STRING = "Illegal value string for FloatEncoding";
	const char* const SIZE_ENTRY   = "Illegal size entry for float value";
}


FloatEncoding::FloatEncoding():
	_values()
{
}


FloatEncoding::FloatEncoding(float value):
	_values(1, value)
{
}


FloatEncoding::FloatEncoding(const std::vector<float>& values):
	_values(values)
{
	if (_values.empty()) throw FISEncodingException(EMPTY_DATA);
}


FloatEncoding::FloatEncoding(const std::string& text)
{
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	parse(text, _values);
	if (_values.empty()) throw FISEncodingException(VALUE_STRING);
}


FloatEncoding::~FloatEncoding()
{
}


void FloatEncoding::parse(const std::string& text, std::vector<float>& values)
{
	// The round trip goes through the double formatter, the text produced
	// through the float one; both are as the format requires.
	EncodingSupport::parseList(text, values, [](const std::string& piece, std::string& canonical, float& value)
	{
		double parsed = 0;
		if (!Ixor::NumberParser::tryParseFloat(piece, parsed)) return false;
		canonical.clear();
		Ixor::NumberFormatter::append(canonical, parsed);
		if (canonical != piece) return false;
		// Zero, negatives and subnormals are refused as text on purpose;
		// typed values skip this test.
		if (!(parsed >= std::numeric_limits<float>::min() && parsed <= std::numeric_limits<float>::max())) return false;
		value = static_cast<float>(parsed);
		return true;
	});
}


unsigned int FloatEncoding::type() const
{
	return 7;
}


bool FloatEncoding::merge(const Encoding& other)
{
	const FloatEncoding* pOther = other.type() == type() ? dynamic_cast<const FloatEncoding*>(&other) : nullptr;
	if (!pOther) return false;
	EncodingSupport::appendCopy(_values, pOther->_values);
	return true;
}


void FloatEncoding::write(BitStreamWriter& writer) const
{
	writeValues(writer, _values);
}


void FloatEncoding::writeValues(BitStreamWriter& writer, const std::vector<float>& values)
{
	EncodingSupport::writeBigEndian(writer, values);
}


void FloatEncoding::decode(BitStreamReader& reader, std::string& text)
{
	text.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(float), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	text.reserve(length*4);
	for (const unsigned char* const pEnd = p + length; p != pEnd; p += sizeof(float))
	{
		if (!text.empty()) text += ' ';
		Ixor::NumberFormatter::append(text, EncodingSupport::loadBigEndian<float>(p));
	}
}


void FloatEncoding::decode(BitStreamReader& reader, std::vector<float>& values)
{
	values.clear();
	const std::size_t length = EncodingSupport::readValueLength<FISEncodingException>(reader, sizeof(float), SIZE_ENTRY);
	std::string scratch;
	const unsigned char* p = EncodingSupport::readOctets(reader, length, scratch);
	EncodingSupport::appendFromBigEndian(p, length/sizeof(float), values);
}


Ixor::AutoPtr<Encoding> FloatEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<FloatEncoding> pEncoding(new FloatEncoding);
	decode(reader, pEncoding->_values);
	pEncoding->createContent();
	return pEncoding;
}


Int32 FloatEncoding::check(const std::string& text)
{
	std::vector<float> values;
	parse(text, values);
	return EncodingSupport::octetCount(values.size()*sizeof(float));
}


void FloatEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	// As FloatEncoding(text).write(writer), without the heap object.
	if (text.empty()) throw FISEncodingException(EMPTY_DATA);
	std::vector<float> values;
	parse(text, values);
	if (values.empty()) throw FISEncodingException(VALUE_STRING);
	writeValues(writer, values);
}


DecodeMethod FloatEncoding::decodeMethod() const
{
	return &FloatEncoding::decode;
}


CheckMethod FloatEncoding::checkMethod() const
{
	return &FloatEncoding::check;
}


EncodeMethod FloatEncoding::encodeMethod() const
{
	return &FloatEncoding::encode;
}


void FloatEncoding::handle(FISContentHandler* pHandler) const
{
	if (!pHandler) return;
	for (float value: _values) pHandler->encodedData(value);
}


void FloatEncoding::createContent()
{
	_content.clear();
	for (std::size_t i = 0; i < _values.size(); ++i)
	{
		if (i) _content += ' ';
		Ixor::NumberFormatter::append(_content, _values[i]);
	}
}


} } // namespace Ixor::FastInfoset
