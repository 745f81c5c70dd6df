// Measures reading and writing Fast Infoset against reading and writing the
// same documents as XML text, all in memory, and prints one table per
// document and a summary.
//
//   fastinfoset-bench [--benchmark_...] DOCUMENT.xml...
//
// Every row also gives its throughput in "XML-equivalent" MB/s, the size of
// the document as XML text divided by the time, so that rows that read or
// write different encodings of one document compare like with like.


#include "BenchSupport.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Poco/Path.h"
#include "Poco/SAX/SAXParser.h"
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>


namespace {


using Bench::Counts;


struct Measure
{
	const char* id;
	const char* label;
};


// Also the order of the rows in each table.
const Measure MEASURES[] =
{
	{"memcpy",        "memcpy of the XML (ceiling)"},
	{"parse_fi",      "FI -> SAX: FastInfosetParser"},
	{"parse_sax",     "XML -> SAX: host SAXParser"},
	{"parse_expat",   "XML -> SAX: expat"},
	{"parse_libxml2", "XML -> SAX: libxml2 SAX2"},
	{"write_fi",      "events -> FI: FastInfosetWriter"},
	{"write_xml",     "events -> XML: host XMLWriter"},
	{"convertToFIS",  "XML -> FI: Converter::convertToFIS"},
	{"convertToXML",  "FI -> XML: Converter::convertToXML"},
};


struct Document
	/// A document under measurement. Its texts, Fast Infoset form and
	/// events are loaded when a measurement first needs them and dropped
	/// when the next document starts; the sizes stay for the tables.
{
	std::string path;
	std::string name;

	std::string xml;
	std::string fi;
	std::unique_ptr<Bench::EventList> pEvents;

	bool loaded = false;
	std::size_t xmlSize = 0;
	std::size_t fiSize = 0;
	std::size_t xmlGzipSize = 0;
	std::size_t fiGzipSize = 0;
	std::size_t eventCount = 0;
	std::size_t eventMemory = 0;
	std::size_t xmlWriterSize = 0;

	std::map<std::string, Counts> counts;
	std::vector<std::string> checks;
	std::vector<std::string> problems;
	std::vector<std::string> notes;
};


std::vector<std::unique_ptr<Document>> documents;
Document* pCurrent = nullptr;


Document& use(Document& doc, bool needEvents)
{
	if (pCurrent != &doc)
	{
		if (pCurrent)
		{
			std::string().swap(pCurrent->xml);
			std::string().swap(pCurrent->fi);
			pCurrent->pEvents.reset();
		}
		pCurrent = &doc;
	}
	if (doc.xml.empty())
	{
		doc.xml = Bench::readFile(doc.path);
		doc.fi = Bench::encodeFastInfoset(doc.xml);
		if (!doc.loaded)
		{
			doc.loaded = true;
			doc.xmlSize = doc.xml.size();
			doc.fiSize = doc.fi.size();
			doc.xmlGzipSize = Bench::gzipSize(doc.xml);
			doc.fiGzipSize = Bench::gzipSize(doc.fi);
		}
	}
	if (needEvents && !doc.pEvents)
	{
		doc.pEvents.reset(new Bench::EventList);
		doc.pEvents->record(doc.xml);
		doc.eventCount = doc.pEvents->eventCount();
		doc.eventMemory = doc.pEvents->memoryUsed();
	}
	return doc;
}


void setRates(benchmark::State& state, const Document& doc, std::size_t ioBytes)
{
	using benchmark::Counter;
	state.counters["io"] = Counter(static_cast<double>(ioBytes), Counter::kIsIterationInvariantRate, Counter::kIs1000);
	state.counters["xml"] = Counter(static_cast<double>(doc.xmlSize), Counter::kIsIterationInvariantRate, Counter::kIs1000);
	state.SetLabel(std::to_string(ioBytes) + " io octets");
}


void keepCounts(Document& doc, const char* id, const Counts& total, benchmark::IterationCount iterations)
{
	if (iterations == 0) return;
	Counts perDocument;
	perDocument.elements = total.elements / static_cast<std::uint64_t>(iterations);
	perDocument.characters = total.characters / static_cast<std::uint64_t>(iterations);
	doc.counts[id] = perDocument;
}


void check(Document& doc, bool ok, const std::string& what)
{
	for (const std::string& seen: doc.checks)
	{
		if (seen == what) return;
	}
	doc.checks.push_back(what);
	if (!ok) doc.problems.push_back(what + ": NO");
}


void note(Document& doc, const std::string& what)
{
	for (const std::string& seen: doc.notes)
	{
		if (seen == what) return;
	}
	doc.notes.push_back(what);
}


void countOutput(Document& doc, const char* id, const std::string& xml)
	/// The elements of a writer's XML output join the parsers' counts.
	/// Output that is not well-formed is the library's or the host's
	/// business, not a failed measurement: it is noted.
{
	Bench::ExpatParser expat;
	try
	{
		expat.parse(xml.data(), xml.size());
		doc.counts[id] = expat.counts;
	}
	catch (const Ixor::Exception& exc)
	{
		note(doc, std::string(id) + ": the XML written is not well-formed, its elements were not counted (expat: " + exc.message() + ")");
	}
}


template <class Body>
void guarded(benchmark::State& state, Body body)
	/// Turns an exception into a failed measurement.
{
	try
	{
		body();
	}
	catch (const Ixor::Exception& exc)
	{
		state.SkipWithError(exc.displayText().c_str());
	}
	catch (const std::exception& exc)
	{
		state.SkipWithError(exc.what());
	}
}


//
// The measurements
//
void benchMemcpy(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		std::vector<char> target(doc.xml.size());
		std::memset(target.data(), 0, target.size());
		for (auto _: state)
		{
			std::memcpy(target.data(), doc.xml.data(), doc.xml.size());
			benchmark::DoNotOptimize(target.data());
			benchmark::ClobberMemory();
		}
		setRates(state, doc, doc.xml.size());
	});
}


void benchParseFI(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::NullHandler handler;
		Ixor::FastInfoset::FastInfosetParser parser;
		Bench::setUpFastInfosetParser(parser, handler);
		for (auto _: state)
		{
			Bench::parseFastInfoset(parser, doc.fi);
		}
		keepCounts(doc, "parse_fi", handler.counts, state.iterations());
		setRates(state, doc, doc.fi.size());
	});
}


void benchParseSAX(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::NullHandler handler;
		Ixor::XML::SAXParser parser;
		Bench::setUpXMLParser(parser, handler);
		for (auto _: state)
		{
			Bench::parseXML(parser, doc.xml);
		}
		keepCounts(doc, "parse_sax", handler.counts, state.iterations());
		setRates(state, doc, doc.xml.size());
	});
}


void benchParseExpat(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::ExpatParser parser;
		for (auto _: state)
		{
			parser.parse(doc.xml.data(), doc.xml.size());
		}
		keepCounts(doc, "parse_expat", parser.counts, state.iterations());
		setRates(state, doc, doc.xml.size());
	});
}


void benchParseLibXml2(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::LibXml2Parser parser;
		for (auto _: state)
		{
			parser.parse(doc.xml.data(), doc.xml.size());
		}
		keepCounts(doc, "parse_libxml2", parser.counts, state.iterations());
		setRates(state, doc, doc.xml.size());
	});
}


void benchWriteFI(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, true);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			Bench::writeFastInfoset(*doc.pEvents, out);
		}
		check(doc, out.str() == doc.fi, "replayed events written as FI give convertToFIS's octets");
		setRates(state, doc, out.size());
	});
}


void benchWriteXML(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, true);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			Bench::writeXML(*doc.pEvents, out);
		}
		doc.xmlWriterSize = out.size();
		countOutput(doc, "write_xml", out.str());
		setRates(state, doc, out.size());
	});
}


void benchConvertToFIS(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			Bench::convertToFastInfoset(doc.xml, out);
		}
		check(doc, out.str() == doc.fi, "convertToFIS from a memory stream gives the same octets");
		setRates(state, doc, doc.xml.size());
	});
}


void benchConvertToXML(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			Bench::convertToXML(doc.fi, out);
		}
		countOutput(doc, "convertToXML", out.str());
		setRates(state, doc, doc.fi.size());
	});
}


typedef void (*BenchFunction)(benchmark::State&, Document*);


BenchFunction benchFunction(const std::string& id)
{
	static const std::map<std::string, BenchFunction> FUNCTIONS =
	{
		{"memcpy", benchMemcpy},
		{"parse_fi", benchParseFI},
		{"parse_sax", benchParseSAX},
		{"parse_expat", benchParseExpat},
		{"parse_libxml2", benchParseLibXml2},
		{"write_fi", benchWriteFI},
		{"write_xml", benchWriteXML},
		{"convertToFIS", benchConvertToFIS},
		{"convertToXML", benchConvertToXML},
	};
	return FUNCTIONS.at(id);
}


//
// The tables
//
struct Result
{
	double seconds = 0;   // CPU time per document
	double cv = -1;       // coefficient of variation over repetitions
	std::string error;
};


std::string format(const char* pattern, double value)
{
	char buffer[64];
	std::snprintf(buffer, sizeof(buffer), pattern, value);
	return buffer;
}


std::string megabytes(std::size_t octets)
{
	return format(octets < 10000000 ? "%.3f MB" : "%.1f MB", static_cast<double>(octets)/1e6);
}


std::string percent(std::size_t part, std::size_t whole)
{
	return whole ? format("%.1f%%", 100.0*static_cast<double>(part)/static_cast<double>(whole)) : std::string("-");
}


std::string padRight(const std::string& s, std::size_t width)
{
	return s.size() >= width ? s : s + std::string(width - s.size(), ' ');
}


std::string padLeft(const std::string& s, std::size_t width)
{
	return s.size() >= width ? s : std::string(width - s.size(), ' ') + s;
}


std::string rate(double octets, double seconds)
{
	if (seconds <= 0) return "-";
	const double mbps = octets/seconds/1e6;
	return format(mbps < 100 ? "%.2f" : "%.1f", mbps);
}


class TableReporter: public benchmark::ConsoleReporter
	/// Passes the usual lines on and, at the end, prints the tables.
{
public:
	TableReporter():
		benchmark::ConsoleReporter(OO_Tabular)
	{
	}

	void ReportRuns(const std::vector<Run>& reports)
	{
		benchmark::ConsoleReporter::ReportRuns(reports);
		for (const Run& run: reports)
		{
			const std::string& fullName = run.run_name.function_name;
			const std::string::size_type slash = fullName.find('/');
			if (slash == std::string::npos) continue;
			Result& result = _results[fullName.substr(slash + 1)][fullName.substr(0, slash)];
			if (run.error_occurred)
			{
				result.error = run.error_message;
				continue;
			}
			const double seconds = run.GetAdjustedCPUTime()/benchmark::GetTimeUnitMultiplier(run.time_unit);
			if (run.run_type == Run::RT_Iteration)
			{
				// Aggregates, when there are repetitions, come later and win.
				if (run.repetitions <= 1 || result.seconds == 0) result.seconds = seconds;
			}
			else if (run.aggregate_name == "median")
			{
				result.seconds = seconds;
			}
			else if (run.aggregate_name == "cv")
			{
				result.cv = run.cpu_accumulated_time;
			}
		}
	}

	void Finalize()
	{
		benchmark::ConsoleReporter::Finalize();
		std::ostream& out = std::cout;
		out << "\nTimes are CPU time per document (the median when repeated); MB are 10^6 octets.\n"
			<< "io MB/s: octets of the row's own input (output for the writers) per second.\n"
			<< "XML-eq MB/s: octets of the document as XML text per second, comparable across rows.\n"
			<< "vs expat: XML-eq throughput relative to expat's parse of the XML text.\n";
		for (const std::unique_ptr<Document>& pDoc: documents)
		{
			auto it = _results.find(pDoc->name);
			if (it != _results.end() && pDoc->loaded) printTable(out, *pDoc, it->second);
		}
		printSummary(out);
	}

private:
	typedef std::map<std::string, Result> Results;

	static double ioOctets(const Document& doc, const std::string& id)
	{
		if (id == "parse_fi" || id == "write_fi" || id == "convertToXML") return static_cast<double>(doc.fiSize);
		if (id == "write_xml") return static_cast<double>(doc.xmlWriterSize);
		return static_cast<double>(doc.xmlSize);
	}

	void printTable(std::ostream& out, const Document& doc, const Results& results)
	{
		out << "\n== " << doc.name << ": XML " << megabytes(doc.xmlSize) << ", FI " << megabytes(doc.fiSize)
			<< " (" << percent(doc.fiSize, doc.xmlSize) << " of XML); gzip'd: XML " << megabytes(doc.xmlGzipSize)
			<< ", FI " << megabytes(doc.fiGzipSize) << " (" << percent(doc.fiGzipSize, doc.xmlGzipSize) << ")\n";
		// expat's counts when it ran; any parser's otherwise.
		auto itCounts = doc.counts.find("parse_expat");
		if (itCounts == doc.counts.end()) itCounts = doc.counts.begin();
		std::string facts;
		if (itCounts != doc.counts.end())
			facts = std::to_string(itCounts->second.elements) + " elements, " + std::to_string(itCounts->second.characters) + " octets of character data";
		if (doc.eventCount)
			facts += (facts.empty() ? "" : "; ") + std::to_string(doc.eventCount) + " SAX events recorded in " + megabytes(doc.eventMemory);
		if (!facts.empty()) out << "   " << facts << "\n";

		const std::size_t labelWidth = 38;
		out << "   " << padRight("measurement", labelWidth) << padLeft("ms/doc", 10) << padLeft("io MB/s", 11)
			<< padLeft("XML-eq MB/s", 13) << padLeft("vs expat", 10) << padLeft("cv", 7) << "\n";
		const Result* pExpat = find(results, "parse_expat");
		for (const Measure& m: MEASURES)
		{
			const Result* pResult = find(results, m.id);
			if (!pResult) continue;
			out << "   " << padRight(m.label, labelWidth);
			if (!pResult->error.empty())
			{
				out << "  failed: " << pResult->error << "\n";
				continue;
			}
			const double s = pResult->seconds;
			out << padLeft(format("%.3f", s*1e3), 10)
				<< padLeft(rate(ioOctets(doc, m.id), s), 11)
				<< padLeft(rate(static_cast<double>(doc.xmlSize), s), 13)
				<< padLeft(pExpat && pExpat->error.empty() && s > 0 ? format("%.2fx", pExpat->seconds/s) : "-", 10)
				<< padLeft(pResult->cv >= 0 ? format("%.1f%%", 100*pResult->cv) : "", 7) << "\n";
		}
		printChecks(out, doc);
	}

	static void printChecks(std::ostream& out, const Document& doc)
	{
		// Every parser, and expat over convertToXML's output, must have seen
		// the same elements; the octets of character data differ where a
		// parser reports line ends or attribute defaults its own way.
		std::string elements;
		bool agree = true;
		const Counts* pFirst = nullptr;
		for (const auto& entry: doc.counts)
		{
			if (!pFirst) pFirst = &entry.second;
			else if (entry.second.elements != pFirst->elements) agree = false;
			elements += " " + entry.first + "=" + std::to_string(entry.second.elements);
		}
		if (!agree) out << "   CHECK FAILED: element counts differ:" << elements << "\n";
		for (const std::string& problem: doc.problems) out << "   CHECK FAILED: " << problem << "\n";
		for (const std::string& note: doc.notes) out << "   note: " << note << "\n";
	}

	static const Result* find(const Results& results, const std::string& id)
	{
		auto it = results.find(id);
		return it == results.end() ? nullptr : &it->second;
	}

	double seconds(const std::string& doc, const std::string& id) const
		/// 0 when not measured or failed.
	{
		auto itDoc = _results.find(doc);
		if (itDoc == _results.end()) return 0;
		const Result* pResult = find(itDoc->second, id);
		return pResult && pResult->error.empty() ? pResult->seconds : 0;
	}

	void printSummary(std::ostream& out)
	{
		struct Ratio
		{
			const char* label;
			const char* numerator;    // the faster the numerator, the larger the ratio
			const char* denominator;
		};
		static const Ratio RATIOS[] =
		{
			{"FI parse / expat parse",              "parse_fi",     "parse_expat"},
			{"FI parse / libxml2 parse",            "parse_fi",     "parse_libxml2"},
			{"FI parse / host SAXParser parse",     "parse_fi",     "parse_sax"},
			{"FI writer / expat parse",             "write_fi",     "parse_expat"},
			{"FI writer / host XMLWriter",          "write_fi",     "write_xml"},
			{"convertToFIS / host SAXParser parse", "convertToFIS", "parse_sax"},
			{"convertToXML / convertToFIS",         "convertToXML", "convertToFIS"},
		};

		out << "\n== Summary over " << loadedCount() << " documents (geometric means)\n"
			<< "   Throughput ratios, XML-equivalent (above 1: the first is faster):\n";
		for (const Ratio& ratio: RATIOS)
		{
			std::vector<double> values;
			for (const std::unique_ptr<Document>& pDoc: documents)
			{
				const double a = seconds(pDoc->name, ratio.numerator);
				const double b = seconds(pDoc->name, ratio.denominator);
				if (a > 0 && b > 0) values.push_back(b/a);
			}
			out << "   " << padRight(ratio.label, 40) << padLeft(geometricMean(values), 8) << "  (" << values.size() << " documents)\n";
		}

		std::vector<double> sizes;
		std::vector<double> gzipSizes;
		for (const std::unique_ptr<Document>& pDoc: documents)
		{
			if (!pDoc->loaded || !pDoc->xmlSize) continue;
			sizes.push_back(static_cast<double>(pDoc->fiSize)/static_cast<double>(pDoc->xmlSize));
			if (pDoc->xmlGzipSize) gzipSizes.push_back(static_cast<double>(pDoc->fiGzipSize)/static_cast<double>(pDoc->xmlGzipSize));
		}
		out << "   Sizes:\n"
			<< "   " << padRight("FI size / XML size", 40) << padLeft(geometricMean(sizes), 8) << "\n"
			<< "   " << padRight("FI gzip'd / XML gzip'd", 40) << padLeft(geometricMean(gzipSizes), 8) << "\n";

		out << "   XML-equivalent MB/s per measurement:\n";
		for (const Measure& m: MEASURES)
		{
			std::vector<double> rates;
			for (const std::unique_ptr<Document>& pDoc: documents)
			{
				const double s = seconds(pDoc->name, m.id);
				if (s > 0) rates.push_back(static_cast<double>(pDoc->xmlSize)/s/1e6);
			}
			if (!rates.empty()) out << "   " << padRight(m.label, 40) << padLeft(geometricMean(rates, "%.1f"), 8) << "\n";
		}

		std::size_t failed = 0;
		for (const std::unique_ptr<Document>& pDoc: documents) failed += pDoc->problems.size();
		for (const auto& doc: _results)
		{
			for (const auto& result: doc.second) failed += result.second.error.empty() ? 0 : 1;
		}
		std::size_t notes = 0;
		for (const std::unique_ptr<Document>& pDoc: documents) notes += pDoc->notes.size();
		out << "   Checks: " << (failed ? std::to_string(failed) + " FAILED (see the tables)" : std::string("all passed"));
		if (notes) out << "; " << notes << " notes (see the tables)";
		out << "\n";
	}

	std::size_t loadedCount() const
	{
		std::size_t count = 0;
		for (const std::unique_ptr<Document>& pDoc: documents) count += pDoc->loaded ? 1 : 0;
		return count;
	}

	static std::string geometricMean(const std::vector<double>& values, const char* pattern = "%.3f")
	{
		if (values.empty()) return "-";
		double logSum = 0;
		for (double v: values) logSum += std::log(v);
		return format(pattern, std::exp(logSum/static_cast<double>(values.size())));
	}

	std::map<std::string, Results> _results;
};


} // namespace


int main(int argc, char** argv)
{
	benchmark::Initialize(&argc, argv);
	if (argc < 2)
	{
		std::cerr << "usage: " << argv[0] << " [--benchmark_filter=REGEX] [--benchmark_...] DOCUMENT.xml...\n"
			"Measurements: ";
		for (const Measure& m: MEASURES) std::cerr << m.id << " ";
		std::cerr << "\nBenchmark names are MEASUREMENT/DOCUMENT, the document's file name without .xml.\n";
		return 2;
	}
	for (int i = 1; i < argc; ++i)
	{
		std::unique_ptr<Document> pDoc(new Document);
		pDoc->path = argv[i];
		pDoc->name = Poco::Path(pDoc->path).getBaseName();
		documents.push_back(std::move(pDoc));
	}
	for (const std::unique_ptr<Document>& pDoc: documents)
	{
		for (const Measure& m: MEASURES)
		{
			benchmark::RegisterBenchmark((std::string(m.id) + "/" + pDoc->name).c_str(), benchFunction(m.id), pDoc.get())
				->Unit(benchmark::kMillisecond);
		}
	}

	TableReporter reporter;
	reporter.SetOutputStream(&std::cerr);
	reporter.SetErrorStream(&std::cerr);
	benchmark::RunSpecifiedBenchmarks(&reporter);
	benchmark::Shutdown();
	return 0;
}
