#include "SizeAndSpeed.h"
#include "TextFormat.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Poco/CountingStream.h"
#include "Poco/DeflatingStream.h"
#include "Poco/MemoryStream.h"
#include "Poco/NullStream.h"
#include "Poco/NumberFormatter.h"
#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/Clock.h"
#include "Poco/Stopwatch.h"
#include <algorithm>
#include <ostream>
#include <sstream>


using Poco::NumberFormatter;


namespace Fitool {


namespace
{
	const Poco::Clock::ClockDiff ENOUGH = 250000;   // microseconds of runs per measurement
	const Poco::Clock::ClockDiff LONG_RUN = 2000000; // one run this long is enough
	const int MIN_RUNS = 3;
	const int MAX_RUNS = 1000;
}


SizeAndSpeed::SizeAndSpeed(const std::string& xml, const Transcoder::EncodeOptions& options):
	_xml(xml),
	_options(options)
{
	Poco::MemoryInputStream in(xml.data(), xml.size());
	std::ostringstream fi;
	Transcoder::encode(in, fi, options);
	_fi = fi.str();
}


std::size_t SizeAndSpeed::gzipSize(const std::string& data)
{
	Poco::CountingOutputStream counter;
	{
		Poco::DeflatingOutputStream deflater(counter, Poco::DeflatingStreamBuf::STREAM_GZIP, Z_DEFAULT_COMPRESSION);
		deflater.write(data.data(), static_cast<std::streamsize>(data.size()));
		deflater.close();
	}
	return static_cast<std::size_t>(counter.chars());
}


SizeAndSpeed::Timing SizeAndSpeed::measure(const std::function<void()>& run)
{
	Timing timing = {0, 0};
	Poco::Stopwatch total;
	total.start();
	for (;;)
	{
		Poco::Stopwatch once;
		once.start();
		run();
		once.stop();
		const double elapsed = static_cast<double>(once.elapsed());
		timing.fastest = timing.runs == 0 ? elapsed : std::min(timing.fastest, elapsed);
		++timing.runs;
		const Poco::Clock::ClockDiff spent = total.elapsed();
		if (timing.runs >= MAX_RUNS || spent >= LONG_RUN) break;
		if (timing.runs >= MIN_RUNS && spent >= ENOUGH) break;
	}
	return timing;
}


void SizeAndSpeed::print(std::ostream& out, const std::string& name)
{
	const double xmlSize = static_cast<double>(_xml.size());
	out << name << '\n';
	out << "options: max indexed length " << _options.maxIndexedLength
		<< (_options.stripWhitespace ? ", ignorable whitespace dropped" : ", whitespace kept")
		<< (_options.xmlDeclaration ? ", pre-header" : "") << "\n\n";

	struct Size
	{
		const char* label;
		std::size_t octets;
	};
	const Size sizes[] =
	{
		{"XML", _xml.size()},
		{"XML, gzip'd", gzipSize(_xml)},
		{"Fast Infoset", _fi.size()},
		{"Fast Infoset, gzip'd", gzipSize(_fi)}
	};
	out << TextFormat::padRight("size", 26) << TextFormat::padLeft("octets", 12) << TextFormat::padLeft("of XML", 10) << '\n';
	for (const Size& size: sizes)
	{
		out << "  " << TextFormat::padRight(size.label, 24) << TextFormat::padLeft(NumberFormatter::format(size.octets), 12)
			<< TextFormat::padLeft(TextFormat::percent(static_cast<double>(size.octets), xmlSize), 10) << '\n';
	}

	const Transcoder::DecodeOptions decodeOptions;
	struct Step
	{
		const char* label;
		std::function<void()> run;
	};
	const Step steps[] =
	{
		{"parse XML (SAX)", [this]
			{
				Poco::MemoryInputStream in(_xml.data(), _xml.size());
				Ixor::XML::DefaultHandler handler;
				Ixor::XML::SAXParser parser;
				parser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACES, true);
				parser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
				parser.setContentHandler(&handler);
				Ixor::XML::InputSource source(in);
				parser.parse(&source);
			}},
		{"encode XML to FI", [this]
			{
				Poco::MemoryInputStream in(_xml.data(), _xml.size());
				Poco::NullOutputStream nowhere;
				Transcoder::encode(in, nowhere, _options);
			}},
		{"decode FI (SAX)", [this]
			{
				Ixor::XML::DefaultHandler handler;
				Ixor::FastInfoset::FastInfosetParser parser;
				parser.setContentHandler(&handler);
				parser.parseMemoryNP(_fi.data(), _fi.size());
			}},
		{"decode FI to XML", [this, &decodeOptions]
			{
				Poco::MemoryInputStream in(_fi.data(), _fi.size());
				Poco::NullOutputStream nowhere;
				Transcoder::decode(in, nowhere, decodeOptions);
			}}
	};
	out << '\n' << TextFormat::padRight("time (fastest run)", 26) << TextFormat::padLeft("per run", 12)
		<< TextFormat::padLeft("MB/s", 10) << "  (MB of XML; runs)\n";
	for (const Step& step: steps)
	{
		const Timing timing = measure(step.run);
		const double rate = timing.fastest > 0 ? xmlSize / timing.fastest * 1e6 : 0;
		out << "  " << TextFormat::padRight(step.label, 24) << TextFormat::padLeft(TextFormat::milliseconds(timing.fastest), 12)
			<< TextFormat::padLeft(TextFormat::megabytes(rate), 10) << "  " << timing.runs << '\n';
	}
}


} // namespace Fitool
