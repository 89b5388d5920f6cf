// Input queues of the simulated devices: the bytes that wait for the program's
// IN or read, as two texts of equal length. QueueChars holds the bytes as
// characters; QueueKinds one marker per byte telling how the user entered it,
// which only shapes the display. The Peripheral Devices' input queue and both
// terminals keep their queues this way and share these routines.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mb {

// Markers of QueueKinds.
enum QueueKind : char { kQueueString = 0, kQueueHex = 1, kQueueDecimal = 2 };

inline constexpr const char* kIncorrectInput = "Incorrect input!";

// The bytes of a comma-separated list of hexadecimal (base 16) or decimal (base
// 10) bytes: blanks are removed, one leading and one trailing comma dropped; a
// hexadecimal item has one or two digits, a decimal one a value in 0..255.
// nullopt when an item is bad or empty.
std::optional<std::string> ParseByteList(std::string_view entry, int base);

// Puts bytes at the end of the queue with one kind.
void QueueAppend(std::string& chars, std::string& kinds, std::string_view bytes, QueueKind kind);

// Takes the first byte of the queue; -1 when it is empty.
int QueueTake(std::string& chars, std::string& kinds);

// Carries out Send String, Send Hex Bytes or Send Dec Bytes with the text the
// user typed: an empty text does nothing; a bad list queues nothing and gives
// kIncorrectInput. The message, or "" when there is none.
std::string QueueSend(std::string& chars, std::string& kinds, QueueKind kind,
                      std::string_view entry);

// The queue as the windows show it: a string byte as itself in double quotes,
// a hexadecimal one as two digits and "H", a decimal one as a number, joined by
// ","; neighbouring string bytes stand in one quoted run. A comma queued as a
// string byte stays inside its run: "a,b" shows as "a,b" in quotes.
std::string QueueDisplay(std::string_view chars, std::string_view kinds);

// Text from the clipboard as it goes to a queue: every line ends in 13, whether
// the text ended its lines in CR LF, LF or CR. `previous` is the byte before
// `text` (0 at the start), so that a CR LF split between two pieces of a
// stream still ends one line only.
std::string PastedBytes(std::string_view text, char previous = 0);

// The question of each Send command; `queue` names the queue ("port" or
// "terminal").
std::string SendPrompt(QueueKind kind, std::string_view queue);

// The bytes a device received, as a screen shows them: CR LF, a lone CR and a
// lone LF each end a line; a tab stays; other control codes and DEL show
// nothing.
// `previous` is the byte before `raw` (0 at the start), so that a CR LF split
// between two calls still ends one line only.
std::string ScreenLines(std::string_view raw, char previous = 0);

}  // namespace mb
