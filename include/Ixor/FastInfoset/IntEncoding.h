//
// IntEncoding.h
//
// Library: FastInfoset
// Module:  IntEncoding
//


#ifndef FastInfoset_IntEncoding_INCLUDED
#define FastInfoset_IntEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API IntEncoding: public Encoding
	/// A list of signed 32-bit integers (algorithm 4), written as 32-bit
	/// big-endian values. The text form is the values in canonical decimal,
	/// separated by single spaces; it is built by createContent().
{
public:
	typedef Ixor::AutoPtr<IntEncoding> Ptr;

	explicit IntEncoding(int value);

	explicit IntEncoding(const std::vector<int>& values);
		/// Throws FISEncodingException "Illegal (empty) data for IntEncoding"
		/// for an empty vector.

	explicit IntEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// IntEncoding" for an empty text and "Illegal value string for
		/// IntEncoding" for a text that parse() refuses.

	static void parse(const std::string& text, std::vector<int>& values);
		/// Fills values from text, or leaves it empty when the text is not a
		/// list of canonical 32-bit decimals separated by single spaces.

	unsigned int type() const override;
		/// 4.

	bool merge(const Encoding& other) override;
		/// Appends the values of another IntEncoding and returns true;
		/// returns false and changes nothing for any other type. The text
		/// form is not rebuilt.

	void write(BitStreamWriter& writer) const override;

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form. A length that is not a
		/// multiple of 4 throws FISException (not FISEncodingException)
		/// "Illegal size entry for Ixor::Int32 value".

	static void decode(BitStreamReader& reader, std::vector<int>& values);
		/// Reads one value string into values (cleared first). A length that
		/// is not a multiple of 4 throws FISEncodingException "Illegal size
		/// entry for Ixor::Int32 value".

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new IntEncoding with its text form.

	static Int32 check(const std::string& text);
		/// 4 octets per value, or 0 when parse() refuses the text.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(int) call per value, in order; nothing for a null
		/// handler.

	void createContent() override;

protected:
	~IntEncoding();

private:
	IntEncoding();

	static void writeValues(BitStreamWriter& writer, const std::vector<int>& values);

	std::vector<int> _values;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_IntEncoding_INCLUDED
