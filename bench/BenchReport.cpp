#include "BenchReport.h"
#include <cmath>
#include <cstdio>


namespace Bench {


const std::vector<Measure>& measures()
{
	static const std::vector<Measure> MEASURES =
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
	return MEASURES;
}


namespace
{
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

	std::string geometricMean(const std::vector<double>& values, const char* pattern = "%.3f")
	{
		if (values.empty()) return "-";
		double logSum = 0;
		for (double v: values) logSum += std::log(v);
		return format(pattern, std::exp(logSum/static_cast<double>(values.size())));
	}
}


TableReporter::TableReporter(const Documents& documents, std::ostream& tables):
	benchmark::ConsoleReporter(OO_Tabular),
	_documents(documents),
	_tables(tables)
{
}


void TableReporter::ReportRuns(const std::vector<Run>& reports)
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
		// With repetitions the median comes after the single runs and wins.
		if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median")
		{
			result.seconds = seconds;
		}
		else if (run.aggregate_name == "cv")
		{
			result.cv = run.cpu_accumulated_time;
		}
	}
}


void TableReporter::Finalize()
{
	benchmark::ConsoleReporter::Finalize();
	_tables << "\nTimes are CPU time per document (the median when repeated); MB are 10^6 octets.\n"
		<< "io MB/s: octets of the row's own input (output for the writers) per second.\n"
		<< "XML-eq MB/s: octets of the document as XML text per second, comparable across rows.\n"
		<< "vs expat: XML-eq throughput relative to expat's parse of the XML text.\n";
	for (const std::unique_ptr<Document>& pDoc: _documents)
	{
		auto it = _results.find(pDoc->name);
		if (it != _results.end() && pDoc->loaded) printTable(*pDoc, it->second);
	}
	printSummary();
	_tables.flush();
}


void TableReporter::printTable(const Document& doc, const Results& results)
{
	_tables << "\n== " << doc.name << ": XML " << megabytes(doc.xmlSize) << ", FI " << megabytes(doc.fiSize)
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
	if (!facts.empty()) _tables << "   " << facts << "\n";

	const std::size_t labelWidth = 38;
	_tables << "   " << padRight("measurement", labelWidth) << padLeft("ms/doc", 10) << padLeft("io MB/s", 11)
		<< padLeft("XML-eq MB/s", 13) << padLeft("vs expat", 10) << padLeft("cv", 7) << "\n";
	const Result* pExpat = find(results, "parse_expat");
	for (const Measure& m: measures())
	{
		const Result* pResult = find(results, m.id);
		if (!pResult) continue;
		_tables << "   " << padRight(m.label, labelWidth);
		if (!pResult->error.empty())
		{
			_tables << "  failed: " << pResult->error << "\n";
			continue;
		}
		const double s = pResult->seconds;
		_tables << padLeft(format("%.3f", s*1e3), 10)
			<< padLeft(rate(ioOctets(doc, m.id), s), 11)
			<< padLeft(rate(static_cast<double>(doc.xmlSize), s), 13)
			<< padLeft(pExpat && pExpat->error.empty() && s > 0 ? format("%.2fx", pExpat->seconds/s) : "-", 10)
			<< padLeft(pResult->cv >= 0 ? format("%.1f%%", 100*pResult->cv) : "", 7) << "\n";
	}
	printChecks(doc);
}


bool TableReporter::countsAgree(const Document& doc)
{
	// Every parser, and expat over the writers' XML, must have seen the
	// same elements; the octets of character data differ where a parser
	// reports line ends or attribute defaults its own way.
	for (const auto& entry: doc.counts)
	{
		if (entry.second.elements != doc.counts.begin()->second.elements) return false;
	}
	return true;
}


void TableReporter::printChecks(const Document& doc)
{
	if (!countsAgree(doc))
	{
		_tables << "   CHECK FAILED: element counts differ:";
		for (const auto& entry: doc.counts) _tables << " " << entry.first << "=" << entry.second.elements;
		_tables << "\n";
	}
	for (const std::string& problem: doc.problems) _tables << "   CHECK FAILED: " << problem << "\n";
	for (const std::string& note: doc.notes) _tables << "   note: " << note << "\n";
}


void TableReporter::printSummary()
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

	std::size_t loaded = 0;
	for (const std::unique_ptr<Document>& pDoc: _documents) loaded += pDoc->loaded ? 1 : 0;
	_tables << "\n== Summary over " << loaded << " documents (geometric means)\n"
		<< "   Throughput ratios, XML-equivalent (above 1: the first is faster):\n";
	for (const Ratio& ratio: RATIOS)
	{
		std::vector<double> values;
		for (const std::unique_ptr<Document>& pDoc: _documents)
		{
			const double a = seconds(pDoc->name, ratio.numerator);
			const double b = seconds(pDoc->name, ratio.denominator);
			if (a > 0 && b > 0) values.push_back(b/a);
		}
		_tables << "   " << padRight(ratio.label, 40) << padLeft(geometricMean(values), 8) << "  (" << values.size() << " documents)\n";
	}

	std::vector<double> sizes;
	std::vector<double> gzipSizes;
	for (const std::unique_ptr<Document>& pDoc: _documents)
	{
		if (!pDoc->loaded || !pDoc->xmlSize) continue;
		sizes.push_back(static_cast<double>(pDoc->fiSize)/static_cast<double>(pDoc->xmlSize));
		if (pDoc->xmlGzipSize) gzipSizes.push_back(static_cast<double>(pDoc->fiGzipSize)/static_cast<double>(pDoc->xmlGzipSize));
	}
	_tables << "   Sizes:\n"
		<< "   " << padRight("FI size / XML size", 40) << padLeft(geometricMean(sizes), 8) << "\n"
		<< "   " << padRight("FI gzip'd / XML gzip'd", 40) << padLeft(geometricMean(gzipSizes), 8) << "\n";

	_tables << "   XML-equivalent MB/s per measurement:\n";
	for (const Measure& m: measures())
	{
		std::vector<double> rates;
		for (const std::unique_ptr<Document>& pDoc: _documents)
		{
			const double s = seconds(pDoc->name, m.id);
			if (s > 0) rates.push_back(static_cast<double>(pDoc->xmlSize)/s/1e6);
		}
		if (!rates.empty()) _tables << "   " << padRight(m.label, 40) << padLeft(geometricMean(rates, "%.1f"), 8) << "\n";
	}

	const std::size_t failed = failedChecks();
	std::size_t notes = 0;
	for (const std::unique_ptr<Document>& pDoc: _documents) notes += pDoc->notes.size();
	_tables << "   Checks: " << (failed ? std::to_string(failed) + " FAILED (see the tables)" : std::string("all passed"));
	if (notes) _tables << "; " << notes << " notes (see the tables)";
	_tables << "\n";
}


std::size_t TableReporter::failedChecks() const
{
	std::size_t failed = 0;
	for (const std::unique_ptr<Document>& pDoc: _documents)
	{
		failed += pDoc->problems.size() + (countsAgree(*pDoc) ? 0 : 1);
	}
	for (const auto& doc: _results)
	{
		for (const auto& result: doc.second) failed += result.second.error.empty() ? 0 : 1;
	}
	return failed;
}


double TableReporter::seconds(const std::string& doc, const std::string& id) const
{
	auto itDoc = _results.find(doc);
	if (itDoc == _results.end()) return 0;
	const Result* pResult = find(itDoc->second, id);
	return pResult && pResult->error.empty() ? pResult->seconds : 0;
}


const TableReporter::Result* TableReporter::find(const Results& results, const std::string& id)
{
	auto it = results.find(id);
	return it == results.end() ? nullptr : &it->second;
}


double TableReporter::ioOctets(const Document& doc, const std::string& id)
{
	if (id == "parse_fi" || id == "write_fi" || id == "convertToXML") return static_cast<double>(doc.fiSize);
	if (id == "write_xml") return static_cast<double>(doc.xmlWriterSize);
	return static_cast<double>(doc.xmlSize);
}


} // namespace Bench
