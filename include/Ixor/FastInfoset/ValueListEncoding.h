//
// ValueListEncoding.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//


#ifndef FastInfoset_ValueListEncoding_INCLUDED
#define FastInfoset_ValueListEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


template <class V>
struct ValueListTraits;
	/// What the list named V is: its algorithm index, its messages, its
	/// text rule and its octet layout. Specialized in the library's source
	/// file of the list; not for use outside the library.


template <class V, class T>
class FastInfoset_API ValueListEncoding: public Encoding
	/// The typed lists ShortEncoding, IntEncoding, LongEncoding,
	/// BoolEncoding, FloatEncoding, DoubleEncoding and UUIDEncoding, one
	/// template for all: V names the list, T is the type of one value. A
	/// list holds at least one value, except after clear(). Its text form
	/// is the text of each value, separated by single spaces; it is built
	/// by createContent().
	///
	/// Each list is declared below with V as FastInfoset_API and the
	/// library's one instantiation for it (extern template), so that the
	/// vtable and the type information are the library's.
	///
	/// The messages below are those of the list, as its declaration names
	/// them: the empty-data message ("Illegal (empty) data for
	/// ShortEncoding"), the value-string message ("Illegal value string for
	/// ShortEncoding") and the size message.
{
public:
	typedef Ixor::AutoPtr<ValueListEncoding> Ptr;

	explicit ValueListEncoding(T value);

	explicit ValueListEncoding(std::vector<T> values);
		/// Throws FISEncodingException with the empty-data message for an
		/// empty vector.

	explicit ValueListEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException with the empty-data
		/// message for an empty text and the value-string message for a text
		/// that parse() refuses.

	static void parse(const std::string& text, std::vector<T>& values);
		/// Fills values from text, or leaves it empty when the text is not a
		/// list of values in its text form separated by single spaces.

	unsigned int type() const override;
		/// The list's algorithm index.

	bool merge(const Encoding& other) override;
		/// Appends the values of another list of its kind and returns true;
		/// returns false and changes nothing for any other type. The text
		/// form is not rebuilt.

	void append(T value);
		/// Appends one value in place, as merging a list of that value would.
		/// The text form is not rebuilt.

	void clear();
		/// Drops every value and the text form, keeping the capacity, so
		/// that a writer can reuse one object instead of allocating one per
		/// value. An emptied list must be given a value (append(), merge())
		/// before it is written.

	void write(BitStreamWriter& writer) const override;
		/// Writes the values as one length-prefixed octet string; an empty
		/// list is a programming error (assertion).

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form. A length that does not
		/// fit the list's octet layout throws FISEncodingException with the size
		/// message (FISException for IntEncoding alone).

	static void decode(BitStreamReader& reader, std::vector<T>& values);
		/// Reads one value string into values (cleared first). A length that
		/// does not fit the list's octet layout throws FISEncodingException with
		/// the size message.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new list with its text form. A string
		/// without values throws FISEncodingException with the empty-data
		/// message.

	static Int32 check(const std::string& text);
		/// The number of octets the values of text take, or 0 when parse()
		/// refuses the text.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(T) call per value, in order; nothing for a null
		/// handler.

	void createContent() override;

protected:
	~ValueListEncoding();

private:
	typedef ValueListTraits<V> Traits;

	std::vector<T> _values;
};


//
// The lists
//
// Each is the template for a type of value; its header includes this one.
// The library instantiates the template once for each (extern template).
// BoolEncoding, which adds to the template, has a header of its own.
//
struct FastInfoset_API ShortValues;
struct FastInfoset_API IntValues;
struct FastInfoset_API LongValues;
struct FastInfoset_API FloatValues;
struct FastInfoset_API DoubleValues;
struct FastInfoset_API UUIDValues;


extern template class ValueListEncoding<ShortValues, short>;
extern template class ValueListEncoding<IntValues, int>;
extern template class ValueListEncoding<LongValues, long>;
extern template class ValueListEncoding<FloatValues, float>;
extern template class ValueListEncoding<DoubleValues, double>;
extern template class ValueListEncoding<UUIDValues, Ixor::UUID>;


typedef ValueListEncoding<ShortValues, short> ShortEncoding;
	/// A list of signed 16-bit integers (algorithm 3), written as 16-bit
	/// big-endian values. The text form is the values in canonical decimal
	/// (no plus sign, no leading zeros, no minus zero, no white space),
	/// separated by single spaces.
	///
	/// Its messages are "Illegal (empty) data for ShortEncoding", "Illegal value
	/// string for ShortEncoding" and, for a length that is not a multiple of 2,
	/// "Illegal size entry for Ixor::Int16 value".


typedef ValueListEncoding<IntValues, int> IntEncoding;
	/// A list of signed 32-bit integers (algorithm 4), written as 32-bit
	/// big-endian values. The text form is the values in canonical decimal
	/// (no plus sign, no leading zeros, no minus zero, no white space),
	/// separated by single spaces.
	///
	/// Its messages are "Illegal (empty) data for IntEncoding", "Illegal value
	/// string for IntEncoding" and, for a length that is not a multiple of 4,
	/// "Illegal size entry for Ixor::Int32 value".
	///
	/// Decoding to text reports a length that is not a multiple of 4 as
	/// FISException, not FISEncodingException; every other decoder of the
	/// family throws FISEncodingException.


typedef ValueListEncoding<LongValues, long> LongEncoding;
	/// A list of signed 64-bit integers (algorithm 5), written as 64-bit
	/// big-endian values. The text form is the values in canonical decimal
	/// (no plus sign, no leading zeros, no minus zero, no white space),
	/// separated by single spaces.
	///
	/// Its messages are "Illegal (empty) data for LongEncoding", "Illegal value
	/// string for LongEncoding" and, for a length that is not a multiple of 8,
	/// "Illegal size entry for Ixor::Int64 value".


typedef ValueListEncoding<FloatValues, float> FloatEncoding;
	/// A list of IEEE 754 single-precision floats (algorithm 7), written as
	/// 32-bit big-endian values. The text form is the values separated by
	/// single spaces, each in an XML Schema form: the shortest decimal that
	/// reads back as the float ("1.5", "3.4e+38"), "-0" for minus zero, and
	/// "NaN", "INF", "-INF".
	///
	/// parse() accepts "NaN", "INF", "-INF" and the numbers that the double
	/// text form gives back unchanged and that lie from the smallest
	/// positive normal float up to the largest float. Zero and negative
	/// numbers are refused as text, but written when given as values; and
	/// the float text of a value need not be accepted again.
	///
	/// Its messages are "Illegal (empty) data for FloatEncoding", "Illegal value
	/// string for FloatEncoding" and, for a length that is not a multiple of 4,
	/// "Illegal size entry for float value".


typedef ValueListEncoding<DoubleValues, double> DoubleEncoding;
	/// A list of IEEE 754 double-precision floats (algorithm 8), written as
	/// 64-bit big-endian values. The text form is the values separated by
	/// single spaces, each in an XML Schema form: the shortest decimal that
	/// reads back as the value ("1.5", "1e+100"), "-0" for minus zero, and
	/// "NaN", "INF", "-INF". parse() accepts exactly the texts that this
	/// form gives back unchanged.
	///
	/// Its messages are "Illegal (empty) data for DoubleEncoding", "Illegal value
	/// string for DoubleEncoding" and, for a length that is not a multiple of 8,
	/// "Illegal size entry for double value".


typedef ValueListEncoding<UUIDValues, Ixor::UUID> UUIDEncoding;
	/// A list of UUIDs (algorithm 9), written as 16 octets each. The text
	/// form is the canonical UUID texts in upper case (groups of 8, 4, 4, 4
	/// and 12 digits joined by "-"), separated by single spaces; parse()
	/// accepts the texts that the host's UUID parser accepts.
	///
	/// The values are kept as UUIDs rather than as their texts: the text form
	/// is the same, and a long list costs no allocation per value.
	///
	/// Its messages are "Illegal (empty) data for UUIDEncoding", "Illegal
	/// value string for UUIDEncoding" and, for a length that is not a
	/// multiple of 16, "Illegal size entry for Ixor::UUID value".


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_ValueListEncoding_INCLUDED
