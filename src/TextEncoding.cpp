#include "Ixor/FastInfoset/TextEncoding.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/NullEncoding.h"
#include "AlgorithmTable.h"
#include "EncodingSupport.h"
#include "Poco/SAX/ContentHandler.h"


namespace Ixor {
namespace FastInfoset {


template <>
struct TextTraits<CDataText>
{
	static constexpr unsigned int TYPE = AlgorithmTable::CDATA;
	static constexpr const char* EMPTY_STRING = "Illegal empty string for CDataEncoding";

	// An empty text is refused as data: by encode() with the message, by
	// write() through the octet string.
	static constexpr bool EMPTY_IS_A_BUG = false;
};


template <>
struct TextTraits<NullText>
{
	typedef NullEncoding Object;

	static constexpr unsigned int TYPE = 0;
	static constexpr const char* EMPTY_STRING = "Illegal empty string for NullEncoding";

	// The writer never hands over an empty plain string.
	static constexpr bool EMPTY_IS_A_BUG = true;
};


template <class V>
TextEncoding<V>::TextEncoding()
{
}


template <class V>
TextEncoding<V>::TextEncoding(const std::string& text):
	Encoding(text)
{
	if (_content.empty()) throw FISEncodingException(Traits::EMPTY_STRING);
}


template <class V>
TextEncoding<V>::TextEncoding(const char* text, int length):
	// A null pointer or a length below 1 is taken as an empty text.
	Encoding(text, text && length > 0 ? static_cast<std::size_t>(length) : 0)
{
	if (_content.empty()) throw FISEncodingException(Traits::EMPTY_STRING);
}


template <class V>
TextEncoding<V>::~TextEncoding()
{
}


template <class V>
unsigned int TextEncoding<V>::type() const
{
	return Traits::TYPE;
}


template <class V>
bool TextEncoding<V>::merge(const Encoding& other)
{
	if (other.type() != type()) return false;
	_content.append(other.content());
	return true;
}


template <class V>
void TextEncoding<V>::write(BitStreamWriter& writer) const
{
	if (Traits::EMPTY_IS_A_BUG)
	{
		poco_assert(!_content.empty());
	}
	Encoder::nonEmptyOctetString(writer, _content);
}


template <class V>
void TextEncoding<V>::decode(BitStreamReader& reader, std::string& text)
{
	Decoder::nonEmptyOctetString(reader, text);
}


template <class V>
Ixor::AutoPtr<Encoding> TextEncoding<V>::decode(BitStreamReader& reader)
{
	typedef typename EncodingSupport::ObjectOf<Traits, TextEncoding>::Type Object;
	Ixor::AutoPtr<Object> pEncoding(new Object);
	Decoder::nonEmptyOctetString(reader, pEncoding->content());
	return pEncoding;
}


template <class V>
Int32 TextEncoding<V>::check(const std::string& text)
{
	return EncodingSupport::octetCount(text.size());
}


template <class V>
void TextEncoding<V>::encode(BitStreamWriter& writer, const std::string& str)
{
	// As constructing the value from str and writing it, without the copy.
	if (Traits::EMPTY_IS_A_BUG)
	{
		poco_assert(!str.empty());
	}
	else if (str.empty()) throw FISEncodingException(Traits::EMPTY_STRING);
	Encoder::nonEmptyOctetString(writer, str);
}


template <class V>
DecodeMethod TextEncoding<V>::decodeMethod() const
{
	return &TextEncoding::decode;
}


template <class V>
CheckMethod TextEncoding<V>::checkMethod() const
{
	return &TextEncoding::check;
}


template <class V>
EncodeMethod TextEncoding<V>::encodeMethod() const
{
	return &TextEncoding::encode;
}


template <class V>
void TextEncoding<V>::handle(FISContentHandler* pHandler) const
{
	// Text is character data for every handler.
	Encoding::handle(static_cast<Ixor::XML::ContentHandler*>(pHandler));
}


template <class V>
void TextEncoding<V>::createContent()
{
}


template class TextEncoding<CDataText>;
template class TextEncoding<NullText>;


} } // namespace Ixor::FastInfoset
