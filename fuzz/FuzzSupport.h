//
// FuzzSupport.h
//
// Helpers shared by the fuzz targets: findings, the outcome of a parse,
// seeds, and the test kit's recorder and trickling stream set up for
// fuzzing.
//


#ifndef FastInfoset_FuzzSupport_INCLUDED
#define FastInfoset_FuzzSupport_INCLUDED


#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "EventRecorder.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>


namespace FuzzSupport {


using TestSupport::EventRecorder;


[[noreturn]] inline void fail(const std::string& what)
	/// A finding that is no crash of its own: print it and abort, so that
	/// libFuzzer keeps the input and a replay fails.
{
	std::fprintf(stderr, "FINDING: %s\n", what.c_str());
	std::fflush(stderr);
	std::abort();
}


template <class F>
std::string outcomeOf(F f)
	/// "ok", or the name and message of an exception that the library
	/// raises for bad input: one of its own family, or the host's I/O
	/// exception of a failed stream. Any other exception is a finding.
{
	try
	{
		f();
		return "ok";
	}
	catch (const Ixor::FastInfoset::FISException& exc)
	{
		return exc.displayText();
	}
	catch (const Ixor::IOException& exc)
	{
		return exc.displayText();
	}
	catch (const Ixor::Exception& exc)
	{
		fail(std::string("an exception outside the library's family: ") + exc.className() + ": " + exc.displayText());
	}
	catch (const std::exception& exc)
	{
		fail(std::string("an exception outside the library's family: ") + typeid(exc).name() + ": " + exc.what());
	}
}


template <class F>
std::string refusalOf(F f)
	/// "ok", or the name and message of the exception with which a writer
	/// refuses what it is given.
{
	try
	{
		f();
		return "ok";
	}
	catch (const Ixor::Exception& exc)
	{
		return exc.displayText();
	}
}


inline std::uint64_t seedOf(const std::uint8_t* data, std::size_t size)
	/// A seed for the choices a target makes, taken from its input so that a
	/// replay makes the same ones.
{
	return TestSupport::hashOf(reinterpret_cast<const char*>(data), size);
}


inline void configure(Ixor::FastInfoset::FastInfosetParser& parser)
	/// A document may name any file as its external vocabulary: loading
	/// stays off, as it is by default.
{
	parser.setLoadExternalVocabularies(false);
}


inline EventRecorder::Options keptBriefly(EventRecorder::Options options = EventRecorder::Options())
	/// A recorder's options for a fuzz target: the digest covers every
	/// event, but only the first ones are kept to report a difference.
{
	options.keptLines = 40;
	return options;
}


inline std::vector<std::size_t> trickleSizes(std::uint64_t seed)
	/// Chunks of 1 to 7 octets, chosen from the seed, for a stream that
	/// hands out a document a few octets at a time.
{
	std::minstd_rand random(static_cast<std::minstd_rand::result_type>(seed % 2147483646u + 1));
	std::vector<std::size_t> sizes(61);
	for (std::size_t& size: sizes) size = 1 + random() % 7;
	return sizes;
}


inline std::string differenceOf(const EventRecorder& expected, const EventRecorder& actual)
	/// The report of two recorders whose digests differ.
{
	return "digests " + expected.digest() + " and " + actual.digest() + "\n" + TestSupport::firstDifference(expected.lines, actual.lines);
}


} // namespace FuzzSupport


#endif // FastInfoset_FuzzSupport_INCLUDED
