//
// CDataEncoding.h
//
// Library: FastInfoset
// Module:  CDataEncoding
//


#ifndef FastInfoset_CDataEncoding_INCLUDED
#define FastInfoset_CDataEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API CDataEncoding: public Encoding
	/// The text of a CDATA section (algorithm 10): content() holds the UTF-8
	/// text, which is also the octets written. It is character data, not
	/// typed data, for every handler.
{
public:
	typedef Ixor::AutoPtr<CDataEncoding> Ptr;

	explicit CDataEncoding(const std::string& text);
	CDataEncoding(const char* text, int length);
		/// Copies the text. Throws FISEncodingException "Illegal empty string
		/// for CDataEncoding" when it is empty (or length is not positive).

	unsigned int type() const override;
		/// 10.

	bool merge(const Encoding& other) override;
		/// Appends the text of another CDataEncoding and returns true;
		/// returns false for any other type.

	void write(BitStreamWriter& writer) const override;
		/// Writes the text as a non-empty octet string.

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one non-empty octet string into text.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one non-empty octet string into a new CDataEncoding.

	static Int32 check(const std::string& text);
		/// The length of text in octets.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes text; throws as the constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	void handle(Ixor::XML::ContentHandler* pHandler) const override;
	void handle(FISContentHandler* pHandler) const override;
		/// One characters() call with the text; nothing for a null handler.

	void createContent() override;
		/// Nothing: the text is the value.

protected:
	~CDataEncoding();

private:
	CDataEncoding();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_CDataEncoding_INCLUDED
