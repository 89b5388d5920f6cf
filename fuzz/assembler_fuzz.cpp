// Feeds the input, as "prog.asm" (switches in its last byte), to the assembler in a
// scratch folder, its operands to the evaluator, all to Format Code and colouring.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "assembler/asm_highlight.h"
#include "assembler/assembler.h"
#include "assembler/format_code.h"
#include "fuzz_support.h"
#include "settings/settings_store.h"

using namespace mb;

namespace {

// Switch bits of the last input byte.
enum : int {
    kUnofficial = 1,
    kNoPrecedence = 2,
    kTrackedRun = 4,  // a run with progress that fills the address map
    kNoHex = 8,
    kFillFF = 16,
    kObjStart100 = 32,
    kObjCopy = 64,
    kNoIncludes = 128,
};

std::vector<std::string_view> Lines(const std::string& text) {
    std::vector<std::string_view> lines;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find_first_of("\r\n", start);
        if (end == std::string::npos) end = text.size();
        lines.emplace_back(text.data() + start, end - start);
        start = end + 1;
    }
    return lines;
}

// Each operand of the run among its symbols: the short way for a lone label or
// number must give what the full evaluation gives.
void CheckEvaluation(const AssemblySession& session, bool flat) {
    ExpressionContext ctx;
    ctx.symbols = &session.symbols;
    ctx.programCounter = session.ProgramCounter;
    ctx.noOperatorPrecedence = flat;
    for (const SourceLine& line : session.Lines)
        for (const std::string* operand : {&line.Operand1, &line.Operand2, &line.Operand3})
            if (!operand->empty())
                fuzz::Require(
                    EvaluateExpression(*operand, true, ctx) == EvaluateWithLog(*operand, ctx).value,
                    "the short way of the evaluator agrees with the full one");
}

// The editor's colouring of every line: spans in order, inside the line.
void CheckHighlighting(const std::vector<std::string_view>& lines) {
    for (std::string_view line : lines) {
        int covered = 0;
        for (const AsmSpan& span : HighlightAsmLine(line)) {
            fuzz::Require(span.Start >= covered && span.Length > 0 &&
                              span.Start + span.Length <= static_cast<int>(line.size()),
                          "colour spans lie in order inside their line");
            covered = span.Start + span.Length;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::ScratchFolder scratch;
    scratch.Empty();
    fuzz::InputWithOptions input(data, size);
    const int switches = input.Take();
    scratch.Write("prog.asm", input.Payload());

    MemorySettingsStore settings;
    if (switches & kNoHex) settings.SetSettingText("Generate HEX File Also", "OFF");
    if (switches & kFillFF) settings.SetSettingInt("OBJ File Fill Value", 0xFF);
    if (switches & kObjStart100)
        settings.SetSettingInt("Starting Address For OBJ Files Creation", 0x100);
    // Each nesting level multiplies the lines of a file that includes itself by
    // its number of includes, so one level is all an input of some kilobytes can take.
    settings.SetSettingInt("Assembler Include Nesting Level Limit", switches & kNoIncludes ? 0 : 1);
    AssemblerOptions options;
    options.UnofficialInstructions = switches & kUnofficial;
    options.NoOperatorPrecedence = switches & kNoPrecedence;
    options.Tracking = switches & kTrackedRun;
    options.GenerateObjCopy = switches & kObjCopy;

    AssemblerHost host;
    Assembler assembler(settings, host, options);
    int status = switches & kTrackedRun ? 0 : kSilentAssembly;
    const int errors = assembler.AssembleSource(scratch.Folder(), "prog.asm", status);
    const AssemblySession& session = assembler.Session();
    fuzz::Require(session.ErrorList.size() <= static_cast<size_t>(errors),
                  "every listed error is counted");
    if (errors > 0) assembler.FormatAssemblerErrors();

    // Addresses never move between the passes: the bytes of a line fill exactly
    // the room that pass 1 gave it, up to the next line in assembly order.
    const int end = session.LineCount() + 1;
    int steps = 0;
    for (int i = 1; i >= 1 && i < end && ++steps < end; i = session.Lines[i].Next) {
        const SourceLine& line = session.Lines[i];
        const int next = line.Next;
        if (line.ErrorSeverity != 0 || line.OpcodeText.empty() || next < 1 || next >= end) continue;
        const int bytes = static_cast<int>(line.OpcodeText.size() + 1) / 3;
        const int room = session.Lines[next].Address - line.Address;
        fuzz::Require(room == bytes || session.Lines[next].Address == 65535,
                      "a line's bytes fill the room pass 1 measured");
    }

    const std::string text = input.Payload();
    const std::vector<std::string_view> lines = Lines(text);
    CheckEvaluation(session, options.NoOperatorPrecedence);
    CheckHighlighting(lines);
    FormatCode(text, FormatCodeOptions{});
    return 0;
}
