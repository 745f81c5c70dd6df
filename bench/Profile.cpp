// Runs one measurement of the benchmark N times on one document, for use
// under a profiler:
//
//   profile MODE FILE [N]
//
//   parse         FI -> SAX with FastInfosetParser (FILE is .fi, or XML encoded first)
//   write         recorded SAX events -> FastInfosetWriter
//   restart       the same into one writer restarted for every run
//   convertToFIS  Converter::convertToFIS, XML in
//   convertToXML  Converter::convertToXML (FILE is .fi, or XML encoded first)
//   sax | expat | libxml2 | writexml   the XML counterparts, for comparison
//   encode        writes FILE's Fast Infoset form next to it as .fi (N unused)
//
// The loop is the function measure(), so that
//   valgrind --tool=callgrind --collect-atstart=no --toggle-collect=measure bench/profile parse doc.fi 10
// leaves the preparation out. At the end it reports the time per document
// and the peak resident memory before and after the loop.


#include "BenchSupport.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Poco/NumberParser.h"
#include "Poco/Path.h"
#include "Poco/SAX/SAXParser.h"
#include <sys/resource.h>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>


namespace {


long peakResidentKilobytes()
{
	struct rusage usage;
	getrusage(RUSAGE_SELF, &usage);
	return usage.ru_maxrss;
}


struct Input
{
	std::string xml;
	std::string fi;
	Bench::EventList events;
};


__attribute__((noinline)) void measure(const std::string& mode, Input& input, int count, Bench::Counts& counts)
{
	Bench::OutputBuffer out;
	if (mode == "parse")
	{
		Bench::NullHandler handler;
		Ixor::FastInfoset::FastInfosetParser parser;
		Bench::setUpFastInfosetParser(parser, handler);
		for (int i = 0; i < count; ++i) Bench::parseFastInfoset(parser, input.fi);
		counts = handler.counts;
	}
	else if (mode == "sax")
	{
		Bench::NullHandler handler;
		Ixor::XML::SAXParser parser;
		Bench::setUpXMLParser(parser, handler);
		for (int i = 0; i < count; ++i) Bench::parseXML(parser, input.xml);
		counts = handler.counts;
	}
	else if (mode == "expat")
	{
		Bench::ExpatParser parser;
		for (int i = 0; i < count; ++i) parser.parse(input.xml.data(), input.xml.size());
		counts = parser.counts;
	}
	else if (mode == "libxml2")
	{
		Bench::LibXml2Parser parser;
		for (int i = 0; i < count; ++i) parser.parse(input.xml.data(), input.xml.size());
		counts = parser.counts;
	}
	else if (mode == "write")
	{
		for (int i = 0; i < count; ++i) Bench::writeFastInfoset(input.events, out);
	}
	else if (mode == "restart")
	{
		Ixor::FastInfoset::FastInfosetWriter writer(out.stream(), false, Ixor::FastInfoset::DocumentVocabulary::VOC_MAP);
		for (int i = 0; i < count; ++i)
		{
			out.reset();
			writer.reset(out.stream());
			input.events.replay(writer, &writer, &writer);
		}
	}
	else if (mode == "writexml")
	{
		for (int i = 0; i < count; ++i) Bench::writeXML(input.events, out);
	}
	else if (mode == "convertToFIS")
	{
		for (int i = 0; i < count; ++i) Bench::convertToFastInfoset(input.xml, out);
	}
	else if (mode == "convertToXML")
	{
		for (int i = 0; i < count; ++i) Bench::convertToXML(input.fi, out);
	}
	if (out.size()) counts.characters = out.size();
}


int usage()
{
	std::cerr << "usage: profile parse|write|restart|convertToFIS|convertToXML|sax|expat|libxml2|writexml FILE [N]\n"
		"       profile encode FILE.xml\n";
	return 2;
}


} // namespace


int main(int argc, char** argv)
{
	if (argc < 3) return usage();
	const std::string mode = argv[1];
	const std::string path = argv[2];
	const int count = argc > 3 ? Poco::NumberParser::parse(argv[3]) : 1;
	static const char* const MODES[] = {"parse", "write", "restart", "convertToFIS", "convertToXML", "sax", "expat", "libxml2", "writexml", "encode"};
	bool known = false;
	for (const char* m: MODES) known = known || mode == m;
	if (!known || count < 1) return usage();

	try
	{
		// Only what the loop reads stays in memory, so that the peak before
		// the loop is the input's size when FILE is already in the form
		// the loop reads.
		Input input;
		std::string data = Bench::readFile(path);
		const bool fiGiven = Bench::isFastInfoset(data);
		const bool needsFI = mode == "parse" || mode == "convertToXML";
		if (fiGiven)
		{
			if (!needsFI)
			{
				std::cerr << mode << " needs an XML document, " << path << " is Fast Infoset\n";
				return 2;
			}
			input.fi.swap(data);
		}
		else if (needsFI || mode == "encode")
		{
			input.fi = Bench::encodeFastInfoset(data);
		}
		else input.xml.swap(data);
		std::string().swap(data);

		if (mode == "encode")
		{
			Poco::Path target(path);
			target.setExtension("fi");
			std::ofstream out(target.toString(), std::ios::binary);
			out.write(input.fi.data(), static_cast<std::streamsize>(input.fi.size()));
			if (!out) throw Ixor::IOException("cannot write", target.toString());
			std::cout << target.toString() << ": " << input.fi.size() << " octets\n";
			return 0;
		}
		if (mode == "write" || mode == "restart" || mode == "writexml")
		{
			input.events.record(input.xml);
			std::string().swap(input.xml);
		}

		const long before = peakResidentKilobytes();
		Bench::Counts counts;
		const auto start = std::chrono::steady_clock::now();
		measure(mode, input, count, counts);
		const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
		const long after = peakResidentKilobytes();

		std::printf("%s %s: %d x, %.3f ms per document (wall clock)\n", mode.c_str(), path.c_str(), count, 1e3*elapsed.count()/count);
		if (counts.elements) std::printf("  %llu elements, %llu octets of character data\n",
			static_cast<unsigned long long>(counts.elements/static_cast<unsigned>(count)), static_cast<unsigned long long>(counts.characters/static_cast<unsigned>(count)));
		else if (counts.characters) std::printf("  %llu octets written\n", static_cast<unsigned long long>(counts.characters));
		std::printf("  peak resident memory: %.1f MB with the input loaded, %.1f MB after the loop (+%.1f MB)\n",
			before/1024.0, after/1024.0, (after - before)/1024.0);
		return 0;
	}
	catch (const Ixor::Exception& exc)
	{
		std::cerr << path << ": " << exc.displayText() << "\n";
		return 1;
	}
}
