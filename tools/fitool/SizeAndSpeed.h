//
// SizeAndSpeed.h
//
// Tool: fitool
// Module: SizeAndSpeed
//


#ifndef Fitool_SizeAndSpeed_INCLUDED
#define Fitool_SizeAndSpeed_INCLUDED


#include "Transcoder.h"
#include <functional>
#include <iosfwd>
#include <string>


namespace Fitool {


class SizeAndSpeed
	/// The comparison that `fitool stats` prints for one XML document: the
	/// sizes of the XML text and of its Fast Infoset form, both also gzip'd,
	/// and the times to parse the XML, to encode it and to decode the Fast
	/// Infoset form (into SAX events and into XML text).
	///
	/// Times are the fastest of repeated runs on this machine; the figures
	/// that the project publishes come from the benchmarks.
{
public:
	SizeAndSpeed(const std::string& xml, const Transcoder::EncodeOptions& options);
		/// Encodes xml once; throws what Transcoder::encode throws.

	void print(std::ostream& out, const std::string& name);
		/// Measures and prints the one-screen table.

	static std::size_t gzipSize(const std::string& data);
		/// The size of data gzip'd at zlib's default level.

private:
	struct Timing
	{
		double fastest;  // microseconds
		int    runs;
	};

	static Timing measure(const std::function<void()>& run);

	const std::string&        _xml;
	Transcoder::EncodeOptions _options;
	std::string               _fi;
};


} // namespace Fitool


#endif // Fitool_SizeAndSpeed_INCLUDED
