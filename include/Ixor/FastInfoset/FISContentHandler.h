//
// FISContentHandler.h
//
// Library: FastInfoset
// Module:  FISContentHandler
//


#ifndef FastInfoset_FISContentHandler_INCLUDED
#define FastInfoset_FISContentHandler_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Poco/SAX/ContentHandler.h"
#include <cstddef>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API FISContentHandler: public Ixor::XML::ContentHandler
	/// A SAX content handler that also receives typed data: the values of
	/// the built-in encoding algorithms instead of their text form.
	///
	/// On reading, FastInfosetParser makes one call per value (one
	/// binaryData() call per hexadecimal or base64 string); plain text,
	/// CDATA text and strings given by index still arrive through
	/// characters(). On writing, FastInfosetWriter merges consecutive calls
	/// of one kind into one encoded string.
{
public:
	virtual void binaryData(const char* data, std::size_t length) = 0;
		/// Octets; written with the base64 algorithm, received from the
		/// hexadecimal or base64 algorithm.

	virtual void encodedData(short value) = 0;
	virtual void encodedData(int value) = 0;
	virtual void encodedData(long value) = 0;
		/// A signed 64-bit value.
	virtual void encodedData(bool value) = 0;
	virtual void encodedData(float value) = 0;
	virtual void encodedData(double value) = 0;
	virtual void encodedData(const Ixor::UUID& value) = 0;

protected:
	virtual ~FISContentHandler();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FISContentHandler_INCLUDED
