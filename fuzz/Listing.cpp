// A reply to a listing, after a byte that chooses format and query: every byte of what is printed.

#include "arkeon/console.h"
#include "arkeon/text.h"
#include "fuzz/Input.h"
#include "fuzz/ListingModel.h"
#include "fuzz/Output.h"
#include "fuzz/Property.h"
#include "fuzz/Root.h"
#include "hostmgmt/operations/AkHostMgmtList.h"
#include "support/CommandLine.h"
#include "support/FakeClient.h"
#include "support/StatusLines.h"

#include <iterator>

using fuzz::expect;
using fuzz::Listed;

namespace {

enum Format : std::size_t { longFormat, shortFormat, json, compact };

struct Query {
    std::vector<std::string> options;
    Listed listed;
};

const Query queries[] = {
    {{}, Listed::all},
    {{"-hostid", "u"}, Listed::oneHost},
    {{"-apvmappings"}, Listed::ownNames},
    {{"-pending"}, Listed::some},
    {{"-host", "n"}, Listed::some},
};

/// The local host's ID, which -apvmappings asks for.
void setUpIdentity() {
    static const std::string file = fuzz::root().write(
        "etc/certificates.toml", "[[certificate]]\ntype = \"host\"\nserver = \"p\"\n"
                                 "host_id = \"i\"\ncertificate = \"c\"\nprivate_key = \"k\"\n"
                                 "ca = \"a\"\n");
}

struct Run {
    int result = -1;
    fuzz::Output output;
};

Run list(std::size_t format, const Query& query, const std::string& reply) {
    static const char* const formats[] = {"", "-short", "-json", "-json_compact"};
    std::vector<std::string> options = {"-list", "-server", "p"};
    options.insert(options.end(), query.options.begin(), query.options.end());
    if (format != longFormat) {
        options.emplace_back(formats[format]);
    }
    Run run;
    run.output = fuzz::outputOf([&] {
        support::FakeClient client({{0, 200, reply}});
        CLogcmd log;
        AkHostMgmtList operation(parsed(options), log);
        operation.checkArguments();
        run.result = operation.execute();
    });
    return run;
}

void expectSameJson(const std::string& out, json_t* reply) {
    const JsonRef printed(json_loadb(out.data(), out.size(), 0, nullptr));
    expect(json_equal(printed.get(), reply) == 1, "-json prints the same JSON");
}

void expectListing(
    std::size_t format, const Query& query, json_t* reply, const std::string& text,
    const fuzz::Output& output) {
    expect(output.err.empty(), "a listing says nothing on standard error");
    if (format == compact) {
        expect(output.out == text + "\n", "-json_compact prints the reply's bytes");
    } else if (format == json) {
        expectSameJson(output.out, reply);
    } else {
        const auto model = format == shortFormat ? fuzz::shortListing : fuzz::longListing;
        expect(output.out == model(reply, query.listed), "the listing is that of the model");
    }
}

void expectUnreadable(const Run& run, bool found) {
    expect(run.output.out.empty(), "nothing is listed of what is no JSON");
    expect(run.output.err == lineOf(7610), "what is no JSON is reported");
    expect(run.result == (found ? 0 : 7610), "its status is 0 for a query of one host alone");
}

void expectNothingFound(const Query& query, const Run& run) {
    if (query.options.empty() || query.options[0] != "-host") {
        expect(run.result == 0 && run.output.err.empty(), "a list without hosts is no failure");
        expect(
            run.output.out == "Mappings for the specified option do not exist.\n",
            "it is said in words");
    } else {
        expect(run.result == 8902 && run.output.out.empty(), "a name without hosts is a failure");
        expect(
            run.output.err == "Exit Status 8902: Mappings for the specified host do not exist.\n",
            "it is said in words");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    setUpIdentity();
    fuzz::Input input(data, size);
    const unsigned choice = input.byte();
    const std::size_t format = choice % 4;
    const Query& query = queries[choice / 4 % std::size(queries)];
    const std::string text = input.rest();
    const JsonRef reply(json_loadb(text.data(), text.size(), 0, nullptr));
    const bool record = query.listed == Listed::oneHost || query.listed == Listed::ownNames;

    const Run run = list(format, query, text);
    if (!reply && (format != compact || !record)) {
        expectUnreadable(run, record);
    } else if (!record && json_array_size(json_object_get(reply.get(), "hosts")) == 0) {
        expectNothingFound(query, run);
    } else {
        expect(run.result == 0, "a listing succeeds");
        expectListing(format, query, reply.get(), text, run.output);
    }
    return 0;
}
