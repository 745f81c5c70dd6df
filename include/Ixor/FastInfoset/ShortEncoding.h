//
// ShortEncoding.h
//
// Library: FastInfoset
// Module:  ShortEncoding
//


#ifndef FastInfoset_ShortEncoding_INCLUDED
#define FastInfoset_ShortEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API ShortEncoding: public Encoding
	/// A list of signed 16-bit integers (algorithm 3), written as 16-bit
	/// big-endian values. The text form is the values in canonical decimal,
	/// separated by single spaces; it is built by createContent().
{
public:
	typedef Ixor::AutoPtr<ShortEncoding> Ptr;

	explicit ShortEncoding(short value);

	explicit ShortEncoding(const std::vector<short>& values);
		/// Throws FISEncodingException "Illegal (empty) data for ShortEncoding"
		/// for an empty vector.

	explicit ShortEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// ShortEncoding" for an empty text and "Illegal value string for
		/// ShortEncoding" for a text that parse() refuses.

	static void parse(const std::string& text, std::vector<short>& values);
		/// Fills values from text, or leaves it empty when the text is not a
		/// list of canonical 16-bit decimals separated by single spaces.

	unsigned int type() const override;
		/// 3.

	bool merge(const Encoding& other) override;
		/// Appends the values of another ShortEncoding and returns true;
		/// returns false and changes nothing for any other type. The text
		/// form is not rebuilt.

	void write(BitStreamWriter& writer) const override;

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form. A length that is not a
		/// multiple of 2 throws FISEncodingException "Illegal size entry
		/// for Ixor::Int16 value".

	static void decode(BitStreamReader& reader, std::vector<short>& values);
		/// Reads one value string into values (cleared first). A length that
		/// is not a multiple of 2 throws FISEncodingException
		/// "Illegal size entry for Ixor::Int16 value".

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new ShortEncoding with its text form.

	static Int32 check(const std::string& text);
		/// 2 octets per value, or 0 when parse() refuses the text.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(short) call per value, in order; nothing for a null
		/// handler.

	void createContent() override;

protected:
	~ShortEncoding();

private:
	ShortEncoding();

	static void writeValues(BitStreamWriter& writer, const std::vector<short>& values);

	std::vector<short> _values;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_ShortEncoding_INCLUDED
