// `pixkit convert`: load, apply the effects in the order given, save.
#include "cli/Batch.h"
#include "cli/Commands.h"
#include "cli/Inputs.h"
#include "cli/Saving.h"
#include "cli/Streams.h"
#include "cli/Targets.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <ostream>
#include <span>
#include <utility>

namespace pixkit::cli {

namespace {

// One conversion after the other, or several at a time: all that they share is where they go.
class Conversion {
  public:
    Conversion(const ConvertRequest& request, const std::vector<Input>& inputs, Destination& destination)
        : m_request(request), m_inputs(inputs), m_destination(destination) {}

    // An input that fails does not end the others, whatever is wrong with it. The disk takes its time for what is to
    // stay there.
    void convert(Piece& piece) {
        const Input& input = m_inputs[piece.index()];
        Result result{input.name, {}};
        std::shared_ptr<Work> work;
        const bool isWell = succeeds(result, [&] {
            auto bytes = convertOne(input, piece, result);
            if (bytes) work = std::make_shared<Work>(result, std::move(*bytes));
        });
        if (!isWell || !work) return end(piece, result, isWell);
        const auto finish = [this, work](Piece& left) {
            const bool isThere = succeeds(work->result, [&] {
                finishPicture(std::move(work->bytes), m_request.reporting, left.console(), work->result);
            });
            end(left, work->result, isThere);
        };
        try {
            piece.leave(work->bytes.size(), finish);
        } catch (const std::bad_alloc&) { // there is no memory to keep it for later
            finish(piece);
        }
    }

    bool hasFailed() const noexcept { return m_hasFailed; }

  private:
    // What is left to do of a picture.
    struct Work {
        Work(const Result& what, ByteArray&& file) : result(what), bytes(std::move(file)) {}
        Result result;
        ByteArray bytes; // of the file that is still to be written
    };

    void end(Piece& piece, const Result& result, bool isWell) {
        if (!isWell) m_hasFailed = true;
        report(result, m_request.reporting, "convert", piece.index(), piece.console());
    }

    // The result's name is claimed when there is a result: what is no picture takes it from nobody.
    std::optional<ByteArray> convertOne(const Input& input, Piece& piece, Result& result) {
        const Target target = m_destination.targetFor(input);
        result.output = target.name;
        const bool isWritten = !m_request.isDryRun;
        result.reason = reasonToSkip(target, {&input.name, 1}, m_request);
        if (!result.reason.empty()) {
            m_destination.claim(target, input, piece, false);
            result.status = Result::Status::skipped;
            return {};
        }
        cPixSheet sheet;
        const PictureSource source = openSource(input.name, piece.console().in);
        std::span<const EffectStep> steps = m_request.steps;
        if (!load(sheet, source, m_request.loading, steps, result.before)) throw Failed(input.name, problemOf(sheet));
        warn(piece.console().err, input.name, sheet, m_request.loading);
        sheet.HighQualityInterpolation(true); // until --nearest says otherwise
        for (const EffectStep& step : steps) {
            if (!step.apply(sheet)) throw Failed(input.name, step.option + ": " + problemOf(sheet));
        }
        m_destination.claim(target, input, piece, isWritten);
        const auto confirm = [&](const std::string& question) { return piece.confirm(question); };
        return preparePicture(sheet, target, m_request, confirm, piece.console(), result);
    }

    const ConvertRequest& m_request;
    const std::vector<Input>& m_inputs;
    Destination& m_destination;
    std::atomic<bool> m_hasFailed = false;
};

} // namespace

int convert(const ConvertRequest& request, Console& console) {
    if (request.paths.size() < 2) throw UsageError("name at least one picture, and the file or folder for the result");
    const std::string& last = request.paths.back();
    const std::vector<std::string> names(request.paths.begin(), request.paths.end() - 1);
    const std::vector<Input> inputs = findInputs(names, request.recursive, isStream(last) ? "" : toPath(last));
    // Of one that cannot be had that is said, whatever the result is called.
    const bool mayBeFile = names.size() == 1 && inputs.size() == 1 &&
                           (inputs.front().problem.empty() ? inputs.front().name == names.front()
                                                           : formatOf(toPath(last)) || isStream(last));
    Destination destination(last, mayBeFile, inputs, request.format);
    checkSaving(request, last, destination.format());
    const bool hasWork = std::ranges::any_of(inputs, [](const Input& input) { return input.problem.empty(); });
    try {
        if (hasWork && !request.isDryRun) destination.prepare();
    } catch (const Failed& failure) {
        console.err << "pixkit convert: " << failure.what() << '\n';
        const ReportArray nothing(request.reporting.isJson, false, console);
        return exitSomeFailed;
    }
    Conversion conversion(request, inputs, destination);
    const ReportArray reports(request.reporting.isJson, !inputs.empty(), console);
    runBatch(inputs.size(), request.jobs, console, [&](Piece& piece) { conversion.convert(piece); });
    return conversion.hasFailed() ? exitSomeFailed : exitOk;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
