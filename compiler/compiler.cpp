// The compile driver: the two runs, their stages and progress texts, errors and
// warnings, the output file and the diagnostic files.
#include "compiler/compiler.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "assembler/source_text.h"
#include "compiler/keywords.h"
#include "compiler/output_text.h"
#include "core/product.h"
#include "settings/settings_store.h"

namespace mb {

namespace fs = std::filesystem;

namespace {

bool flag(SettingsStore& s, const char* key, int def) {
    return s.GetSettingInt(key, def) != 0;
}

}  // namespace

CompilerOptions ReadCompilerOptions(SettingsStore& s) {
    CompilerOptions o;
    o.showWarnings = flag(s, kKeyShowWarnings, 1);
    o.doNotCompileUnused = flag(s, kKeyDoNotCompileUnused, 0);
    o.initializeVariables = flag(s, kKeyInitializeVariables, 0);
    o.optimizeVariables = flag(s, kKeyOptimizeVariables, 1);
    o.dynamicTemps = flag(s, kKeyDynamicTemps, 0);
    o.tasmListing = flag(s, kKeyTasmListing, 0);
    o.showProgress = flag(s, kKeyShowProgress, 1);
    return o;
}

Compiler::Compiler(SettingsStore& settings, CompileSink& sink, CompilerOptions options)
    : settings_(settings), sink_(sink), options_(options) {}

std::string Compiler::successText(int lineCount, const std::string& folder,
                                  const std::string& name) {
    return "The compilation process was successful.\r\nTotal " + std::to_string(lineCount) +
           " lines of assembler source generated.\r\nOutput saved as " + folder + name + ".asm";
}

std::string Compiler::headerClockText(double mhz) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, static_cast<float>(mhz));
    std::string text(buffer, result.ptr);
    if (text.find('.') == std::string::npos) text += ".0";
    if (text[0] == '.') text.insert(0, "0");
    return text + "MHz";
}

void Compiler::readRunOptions() {
    RunOptions& r = run_;
    SettingsStore& s = settings_;
    r.multipleAssignment = flag(s, kKeyMultipleAssignment, 0);
    r.postIncrementTemp = flag(s, kKeyPostIncrementTemp, 1);
    r.asciiPrintTemp = flag(s, kKeyAsciiPrintTemp, 1);
    r.resultAsTemp = flag(s, kKeyResultAsTemp, 0);
    r.byteMathTemps = flag(s, kKeyByteMathTemps, 1);
    r.optimizeStringTemps = flag(s, kKeyOptimizeStringTemps, 1);
    r.arbitraryFunctionName = flag(s, kKeyArbitraryFunctionName, 0);
    // Kept for other processor models; nothing in a Z80 program depends on them.
    s.GetSettingInt("Allow Arbitrary Use of Official Bit Names", 0);
    s.GetSettingInt("Absolute to Relative Jump/Call Optimization", 1);
    s.GetSettingInt("Basic Compiler - Use Wide Bit Fields", 0);
    s.GetSettingInt("Stack Usage Optimization in I2C Routines", 1);
}

void Compiler::progress(const std::string& text) {
    if (options_.showProgress) sink_.setProgressText(text);
}

int Compiler::compile(const std::string& path, const std::string& editorText,
                      std::string& resultMessage) {
    resultMessage.clear();
    std::string base = path;
    if (base.size() >= 4 && LowerText(base.substr(base.size() - 4)) == ".bas")
        base.resize(base.size() - 4);
    const fs::path p(base);
    folder_ = p.parent_path().string();
    if (!folder_.empty() && folder_.back() != '/') folder_ += '/';
    name_ = p.filename().string();
    outputPath_.clear();

    st_ = CompilerState{};
    if (editorText.find_first_not_of(" \t\r\n") == std::string::npos) {
        st_.errorLine = 1;
        st_.errorMessage = "The editor is empty.";
        sink_.showError(st_.errorMessage);
        return st_.errorLine;
    }
    run_.debugComments = flag(settings_, kKeyDebugComments, 0);
    const auto started = std::chrono::steady_clock::now();
    st_.compileInProgress = true;
    st_.firstRun = true;

    bool ok = performRun(editorText);
    progress("Compiling in progress...   50%");
    if (ok && !st_.firstRun) ok = performRun(editorText);
    progress("Compiling in progress...   100%");
    st_.compileInProgress = false;
    const double ms =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started)
            .count();
    if (settings_.GetSettingInt(kKeyExecutionTimePopup, 0) == 1) {
        char text[64];
        std::snprintf(text, sizeof text, "Execution time: %.3f ms", ms);
        sink_.showMessage(text);
    }
    if (st_.errorLine > 0) {
        st_.warningText.clear();
        st_.lastWarning.clear();
        locateIncludeError();
        return st_.errorLine;
    }
    resultMessage = successText(st_.outputLineCount, folder_, name_);
    return 0;
}

void Compiler::locateIncludeError() {
    if (st_.errorLine <= st_.mainLineCount || st_.mainLineCount < 1) return;
    int previousEnd = st_.mainLineCount;
    for (const IncludeEntry& inc : st_.includes) {
        if (inc.endLine >= st_.errorLine) {
            st_.errorIncludeLine = st_.errorLine - previousEnd - 3;
            st_.errorFile = inc.name;
            sink_.openIncludeAt(inc.name, st_.errorIncludeLine);
            return;
        }
        previousEnd = inc.endLine;
    }
}

void Compiler::resetRun() {
    const bool first = st_.firstRun;
    FirstRunKnowledge learned = std::move(st_.learned);
    const int romEnd = st_.romEnd, ramStart = st_.ramStart, ramEnd = st_.ramEnd;
    const int strMax = st_.stringMaxLength, digits = st_.singleDigits;
    const auto appendLabels = st_.appendLabels;
    const bool inProgress = st_.compileInProgress;
    st_ = CompilerState{};
    st_.firstRun = first;
    st_.compileInProgress = inProgress;
    if (!first) {
        st_.learned = std::move(learned);
        st_.romEnd = romEnd;
        st_.ramStart = ramStart;
        st_.ramEnd = ramEnd;
        st_.stringMaxLength = strMax;
        st_.singleDigits = digits;
        st_.appendLabels = appendLabels;
    }
    if (first) {
        asmLabels_.clear();
        asmLabelOrder_.clear();
        asmLabelsLower_.clear();
    }
    protection_.Reset();
}

bool Compiler::performRun(const std::string& editorText) {
    resetRun();
    readRunOptions();
    splitSource(editorText);
    const bool first = st_.firstRun;
    progress(first ? "Compiling in progress...   5%" : "Compiling in progress...   55%");
    if (!prepareSource()) return false;
    progress(first ? "Compiling in progress...   10%" : "Compiling in progress...   60%");
    if (!declarationScan()) return false;
    progress(first ? "Compiling in progress...   15%" : "Compiling in progress...   65%");
    if (!declarationPass()) return false;
    progress(first ? "Compiling in progress...   45%" : "Compiling in progress...   95%");
    if (!codeGeneration()) return false;
    finishOutput();
    if (options_.generateDebugFiles) writeDebugFiles();
    if (first) {
        // What the second run needs to know of this one.
        st_.learned.declarationUsed.assign(st_.declarations.size(), 0);
        for (std::size_t q = 0; q < st_.declarations.size(); ++q) {
            const int row = st_.declarations[q].symbolRow;
            if (row > 0) st_.learned.declarationUsed[q] = st_.symbols[row].used;
        }
        st_.firstRun = false;
        return true;
    }
    return writeOutput();
}

bool Compiler::fail(const std::string& message) {
    if (quiet_ > 0) return false;         // only tried: the caller decides
    if (st_.errorLine > 0) return false;  // the first error ends the compile
    // Past the end (a structure left open) the error stands on the main file's
    // last line, where the missing closing word belongs.
    const int count = st_.lineCount();
    const int lastMain = st_.mainLineCount >= 1 ? st_.mainLineCount : count;
    st_.errorLine = st_.currentLine > count ? std::max(lastMain, 1)
                    : st_.currentLine < 1   ? 1
                                            : st_.currentLine;
    if (!st_.internalCompile) st_.currentLine = st_.errorLine;
    st_.errorMessage = decodeSourceText(message);  // it may quote the source
    sink_.showError(errorPrefix() + st_.errorMessage);
    return false;
}

std::string Compiler::errorPrefix() const {
    const int n = st_.currentLine;
    const bool inSource = n >= 1 && n <= st_.lineCount();
    const std::string text = inSource ? decodeSourceText(st_.lines[n].xlinijafull) : "";
    if (st_.internalCompile) {
        return "The program could not be compiled!\r\nError in internal routine compilation:\r\n" +
               (inSource ? text : internalLine_) + "\r\n";
    }
    if (inSource && n > st_.mainLineCount && st_.mainLineCount >= 1) {
        int previousEnd = st_.mainLineCount;
        for (const IncludeEntry& inc : st_.includes) {
            if (inc.endLine >= n) {
                return "Error in included file in line " + std::to_string(n - previousEnd - 3) +
                       ":\r\n" + text + "\r\n";
            }
            previousEnd = inc.endLine;
        }
    }
    return "Error in line " + std::to_string(n) + ":\r\n" + text + "\r\n";
}

void Compiler::reportWarning(const std::string& text) {
    if (text == st_.lastWarning) return;
    st_.warningText += text + "\r\n";
    st_.lastWarning = text;
}

void Compiler::warnLine(const std::string& text) {
    reportWarning("Line " + std::to_string(st_.currentLine) + ": " + text);
}

void Compiler::finishOutput() {
    st_.outputText = joinOutputLines(st_.outputLines, !options_.disableLineCrypting, protection_);
    st_.outputLineCount = static_cast<int>(st_.outputLines.size());
}

bool Compiler::writeOutput() {
    const std::string path = folder_ + name_ + ".asm";
    std::error_code ec;
    fs::remove(path, ec);
    std::ofstream out(path, std::ios::binary);
    const std::string bytes = singleByteOutput(st_.outputText);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
        fs::remove(path, ec);
        st_.currentLine = 0;
        return fail("The output file could not be written: " + path);
    }
    outputPath_ = path;
    return true;
}

void Compiler::writeDebugFiles() const {
    auto write = [this](const std::string& file, const std::string& text) {
        std::ofstream(folder_ + file, std::ios::binary) << text;
    };
    write(st_.firstRun ? "z80_debug_adr_log_pass1.txt" : "z80_debug_adr_log.txt",
          addressLogText(st_.outputLines));
    write("_comp_log.txt", keywordLoadLog());
    if (st_.firstRun) return;
    write("z80_debug_lin_log.txt", lineLogText(st_));
    write("z80_debug_declaration_optim_log.txt", declarationLogText(st_));
}

}  // namespace mb
