//
// FloatEncoding.h
//
// Library: FastInfoset
// Module:  FloatEncoding
//


#ifndef FastInfoset_FloatEncoding_INCLUDED
#define FastInfoset_FloatEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API FloatEncoding: public Encoding
	/// A list of IEEE 754 single-precision floats (algorithm 7), written as
	/// 32-bit big-endian values. The text form is the values separated by
	/// single spaces, each as the float formatter writes it; it is built by
	/// createContent().
{
public:
	typedef Ixor::AutoPtr<FloatEncoding> Ptr;

	explicit FloatEncoding(float value);

	explicit FloatEncoding(const std::vector<float>& values);
		/// Throws FISEncodingException "Illegal (empty) data for FloatEncoding"
		/// for an empty vector.

	explicit FloatEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// FloatEncoding" for an empty text and "Illegal value string for
		/// FloatEncoding" for a text that parse() refuses.

	static void parse(const std::string& text, std::vector<float>& values);
		/// Fills values from text, or leaves it empty when the text is not a
		/// list of numbers separated by single spaces, each given back
		/// unchanged by the double formatter and lying from the smallest
		/// positive normal float up to the largest float. Zero and negative
		/// numbers are refused here, but written when given as values.

	unsigned int type() const override;
		/// 7.

	bool merge(const Encoding& other) override;
		/// Appends the values of another FloatEncoding and returns true;
		/// returns false and changes nothing for any other type. The text
		/// form is not rebuilt.

	void write(BitStreamWriter& writer) const override;

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form. A length that is not a
		/// multiple of 4 throws FISEncodingException "Illegal size entry
		/// for float value".

	static void decode(BitStreamReader& reader, std::vector<float>& values);
		/// Reads one value string into values (cleared first). A length that
		/// is not a multiple of 4 throws FISEncodingException
		/// "Illegal size entry for float value".

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new FloatEncoding with its text form.

	static Int32 check(const std::string& text);
		/// 4 octets per value, or 0 when parse() refuses the text.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(float) call per value, in order; nothing for a null
		/// handler.

	void createContent() override;

protected:
	~FloatEncoding();

private:
	FloatEncoding();

	static void writeValues(BitStreamWriter& writer, const std::vector<float>& values);

	std::vector<float> _values;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FloatEncoding_INCLUDED
