//
// Reading.h
//
// The ways a test reads a document: from memory, from a whole stream, and
// from streams that trickle it in one octet or in 2 to 5 octets at a time.
// Every reading test runs under each of them.
//


#ifndef FastInfoset_Reading_INCLUDED
#define FastInfoset_Reading_INCLUDED


#include "TrickleBuffer.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include <cstddef>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>


namespace TestSupport {


enum class Reading
{
	MEMORY,             /// the octets in place: parseMemoryNP, a reader over the block
	WHOLE_STREAM,       /// a std::istringstream, which seeks
	ONE_OCTET,          /// a stream that hands out one octet at a time and cannot seek
	TWO_TO_FIVE_OCTETS  /// a stream that hands out 2, 3, 4, 5, 2, ... octets and cannot seek
};


extern const Reading READINGS[4];
	/// Every way, memory first.


std::ostream& operator << (std::ostream& out, Reading reading);
	/// "Memory", "WholeStream", "OneOctet", "TwoToFiveOctets": names that
	/// can also name a test.


class Input
	/// The octets of one or more documents behind one way of reading. Keeps
	/// its own copy of the octets.
{
public:
	Input(const std::string& octets, Reading reading);

	Input(const std::string& octets, std::vector<std::size_t> chunkSizes);
		/// A stream that hands out chunks of the sizes in turn and cannot
		/// seek (see TrickleBuffer).

	~Input();

	Input(const Input&) = delete;
	Input& operator = (const Input&) = delete;

	Ixor::FastInfoset::BitStreamReader& reader();
		/// A bit reader over the octets; made on the first call.

	void parse(Ixor::FastInfoset::FastInfosetParser& parser);
		/// Parses the next document: the first one, and on each further call
		/// the one after the last document parsed (in memory, lastDocumentSize()
		/// octets on; on a stream, where the parser left it).

	std::istream& stream();
		/// The stream, for readings other than MEMORY.

private:
	const std::string                                   _octets;
	std::size_t                                         _offset = 0;   // of the next document in memory
	std::unique_ptr<std::streambuf>                     _pBuffer;
	std::unique_ptr<std::istream>                       _pStream;
	std::unique_ptr<Ixor::FastInfoset::BitStreamReader> _pReader;
};


} // namespace TestSupport


#endif // FastInfoset_Reading_INCLUDED
