#include "Ixor/FastInfoset/CDataEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "AlgorithmTable.h"
#include "EncodingSupport.h"
#include "Poco/SAX/ContentHandler.h"


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const EMPTY_STRING = "Illegal empty string for CDataEncoding";
}


CDataEncoding::CDataEncoding()
{
}


CDataEncoding::CDataEncoding(const std::string& text):
	Encoding(text)
{
	if (_content.empty()) throw FISEncodingException(EMPTY_STRING);
}


CDataEncoding::CDataEncoding(const char* text, int length):
	// A null pointer or a length below 1 is taken as an empty text.
	Encoding(text, text && length > 0 ? static_cast<std::size_t>(length) : 0)
{
	if (_content.empty()) throw FISEncodingException(EMPTY_STRING);
}


CDataEncoding::~CDataEncoding()
{
}


unsigned int CDataEncoding::type() const
{
	return AlgorithmTable::CDATA;
}


bool CDataEncoding::merge(const Encoding& other)
{
	if (other.type() != type()) return false;
	_content.append(other.content());
	return true;
}


void CDataEncoding::write(BitStreamWriter& writer) const
{
	Encoder::nonEmptyOctetString(writer, _content);
}


void CDataEncoding::decode(BitStreamReader& reader, std::string& text)
{
	Decoder::nonEmptyOctetString(reader, text);
}


Ixor::AutoPtr<Encoding> CDataEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<CDataEncoding> pEncoding(new CDataEncoding);
	Decoder::nonEmptyOctetString(reader, pEncoding->_content);
	return pEncoding;
}


Int32 CDataEncoding::check(const std::string& text)
{
	return EncodingSupport::octetCount(text.size());
}


void CDataEncoding::encode(BitStreamWriter& writer, const std::string& text)
{
	// As CDataEncoding(text).write(writer), without the copy.
	if (text.empty()) throw FISEncodingException(EMPTY_STRING);
	Encoder::nonEmptyOctetString(writer, text);
}


DecodeMethod CDataEncoding::decodeMethod() const
{
	return &CDataEncoding::decode;
}


CheckMethod CDataEncoding::checkMethod() const
{
	return &CDataEncoding::check;
}


EncodeMethod CDataEncoding::encodeMethod() const
{
	return &CDataEncoding::encode;
}


void CDataEncoding::handle(Ixor::XML::ContentHandler* pHandler) const
{
	if (pHandler) pHandler->characters(_content.data(), 0, static_cast<int>(_content.size()));
}


void CDataEncoding::handle(FISContentHandler* pHandler) const
{
	if (pHandler) pHandler->characters(_content.data(), 0, static_cast<int>(_content.size()));
}


void CDataEncoding::createContent()
{
}


} } // namespace Ixor::FastInfoset
