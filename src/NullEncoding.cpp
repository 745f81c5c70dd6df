#include "Ixor/FastInfoset/NullEncoding.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FISException.h"
#include "EncodingSupport.h"


namespace Ixor {
namespace FastInfoset {


NullEncoding::NullEncoding()
{
	// The parser reuses one object for every literal string of a document.
	_content.reserve(1024);
}


NullEncoding::NullEncoding(const std::string& text):
	Encoding(text)
{
	if (_content.empty()) throw FISEncodingException("Illegal empty string for NullEncoding");
}


NullEncoding::NullEncoding(const char* text, int length):
	// A null pointer or a length below 1 is taken as an empty text.
	Encoding(text, text && length > 0 ? static_cast<std::size_t>(length) : 0)
{
	if (_content.empty()) throw FISEncodingException("Illegal empty string for NullEncoding");
}


NullEncoding::NullEncoding(Unreserved)
{
}


NullEncoding::~NullEncoding()
{
}


unsigned int NullEncoding::type() const
{
	return 0;
}


bool NullEncoding::merge(const Encoding& other)
{
	if (other.type() != type()) return false;
	_content.append(other.content());
	return true;
}


void NullEncoding::write(BitStreamWriter& writer) const
{
	poco_assert(!_content.empty());
	Encoder::nonEmptyOctetString(writer, _content);
}


void NullEncoding::decode(BitStreamReader& reader, std::string& out)
{
	Decoder::nonEmptyOctetString(reader, out);
}


Ixor::AutoPtr<Encoding> NullEncoding::decode(BitStreamReader& reader)
{
	Ixor::AutoPtr<NullEncoding> pEncoding(new NullEncoding);
	Decoder::nonEmptyOctetString(reader, pEncoding->content());
	return pEncoding;
}


Int32 NullEncoding::check(const std::string& text)
{
	return EncodingSupport::octetCount(text.size());
}


void NullEncoding::encode(BitStreamWriter& writer, const std::string& str)
{
	poco_assert(!str.empty());
	Encoder::nonEmptyOctetString(writer, str);
}


DecodeMethod NullEncoding::decodeMethod() const
{
	return &NullEncoding::decode;
}


CheckMethod NullEncoding::checkMethod() const
{
	return &NullEncoding::check;
}


EncodeMethod NullEncoding::encodeMethod() const
{
	return &NullEncoding::encode;
}


void NullEncoding::handle(FISContentHandler* pHandler) const
{
	// A plain string is character data for every handler.
	Encoding::handle(static_cast<Ixor::XML::ContentHandler*>(pHandler));
}


void NullEncoding::createContent()
{
}


} } // namespace Ixor::FastInfoset
