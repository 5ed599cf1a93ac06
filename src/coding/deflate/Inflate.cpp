#include "coding/deflate/Inflate.h"

#include "coding/BitReader.h"
#include "coding/deflate/HuffmanTable.h"
#include "coding/deflate/MatchCopy.h"
#include "coding/deflate/Symbols.h"
#include "kernels/cpu.h"
#include <algorithm>
#include <cstring>

// Shifts that take any register for their count.
#ifdef PIXKIT_X86
#define PIXKIT_WITH_BMI2 [[gnu::target("bmi2")]]
#else
#define PIXKIT_WITH_BMI2
#endif

namespace pixkit::deflate {
namespace {

constexpr bool narrow = BitReader::wordBits < 64;
// Literals (or pairs of them) that the fast loop decodes between two refills. In a wide word, after all but one of them
// and a length with its extra bits (20 bits), the index of a distance must still be there.
constexpr unsigned literalsPerRound = narrow ? 1 : 3;
static_assert(narrow || (literalsPerRound - 1) * widestJoinedBits + 20 + distanceTableBits <= BitReader::refilled);
// In a narrow one there must be one literal more, and behind it an index.
static_assert(2 * widestJoinedBits <= BitReader::refilled);
// What decodeFast's rounds need: one refills three times at most, and puts out its literals and one match.
constexpr std::size_t inputMargin = 4 * sizeof(BitReader::Word);
constexpr std::size_t outputMargin = 2 * literalsPerRound + longestMatch + copyOverrun;
static_assert(outputMargin <= Room::least);
// The head of a block, its codes included, has fewer bytes than this: 316 lengths of 7 bits with 7 extra bits at most.
constexpr std::size_t longestHead = 640;
// Joining entries costs time once per block, so that it pays only with so much data (bytes) to come, or where pieces
// may follow, of which nobody knows how much they hold. A vector kernel does it in a fifth of the time.
std::size_t joiningPays() noexcept {
    return (kernels::features() & kernels::cpuAvx2) != 0 ? 2048 : 8192;
}

// A code of the code length alphabet and the bits behind it have this many at most.
constexpr unsigned longestLengthCode = codeLengthTableBits + repeatExtraBits(manyZeros);

// Takes the extra bits of a symbol, which stand behind its code, and drops both.
inline std::size_t takeExtra(BitReader& reader, Entry entry) noexcept {
    const BitReader::Word bits = reader.peek() & ((BitReader::Word{1} << dropBits(entry)) - 1);
    reader.drop(entry);
    return static_cast<std::size_t>(bits >> codeBits(entry));
}

// The same for a distance. A narrow word does not hold the 28 bits that it may have, so it is refilled in between.
inline std::size_t takeDistanceExtra(BitReader& reader, Entry entry) noexcept {
    if constexpr (!narrow) return takeExtra(reader, entry);
    reader.drop(codeBits(entry));
    reader.refillFast();
    return takeExtra(reader, entry - codeBits(entry) * 0x101);
}

// The entry that a link leads to.
template <typename Table>
inline Entry follow(const Table& table, Entry link, BitReader& reader) noexcept {
    reader.drop(link);
    return table.entries[baseOf(link) + (reader.peek() & ((1u << codeBits(link)) - 1))];
}

// Puts out the literals of an entry, of which there may be none: two bytes are written in any case.
inline void putLiterals(std::uint8_t*& out, Entry entry) noexcept {
    const auto both = static_cast<std::uint16_t>(entry >> 16);
    std::memcpy(out, &both, 2);
    out += literalsIn(entry);
}

// Takes the distance behind a length; false for a code that is no distance.
inline bool takeDistance(const DistanceTable& table, BitReader& reader, std::size_t& distance) noexcept {
    if constexpr (narrow) reader.refillFast();
    Entry entry = table.entries[reader.peek() & DistanceTable::mask];
    if constexpr (!narrow) reader.refillFast();
    if (isLink(entry)) entry = follow(table, entry, reader);
    distance = baseOf(entry) + takeDistanceExtra(reader, entry);
    return !isSpecial(entry);
}

enum class Step : std::uint8_t {
    goOn,
    blockEnded,
    outputFull,
    inputEnded,
    damaged,
};

class Inflater {
  public:
    Inflater(std::uint8_t* output, std::size_t capacity, const std::uint8_t* input, std::size_t bytes) noexcept
        : m_reader(input, bytes), m_room{output, output, output + capacity, true}, m_out(output) {}
    explicit Inflater(Pieces& pieces) noexcept
        : m_pieces(&pieces), m_isMoreInput(true), m_reader(nullptr, 0), m_room(pieces.moreRoom(nullptr)),
          m_out(m_room.next) {}

    Result run() noexcept;
    Result runZlib() noexcept;

  private:
    // Lets so many bytes of input be there, unless it ends before.
    void provideInput(std::size_t needed) noexcept {
        if (m_isMoreInput && m_reader.bytesLeft() < needed) [[unlikely]]
            joinPieces(needed);
    }
    void joinPieces(std::size_t needed) noexcept;
    // Lets so much room be there, Room::least at most, unless the output ends before.
    void provideRoom(std::size_t needed) noexcept;
    Step block(bool& isLast) noexcept;
    Step storedBlock() noexcept;
    Step readCodes() noexcept;
    Step readCodeLengths(const CodeLengthTable& table, std::uint8_t* lengths, unsigned count) noexcept;
    Step useFixedCodes() noexcept;
    Step compressedBlock() noexcept;
    template <unsigned indexBits>
    [[gnu::always_inline]] inline Step decodeRounds(const Entry* entries) noexcept;
    // Apart from the rest, and each width for itself, so that the compiler gives the loop all registers.
    template <unsigned indexBits>
    [[gnu::noinline]] Step decodeFast(const Entry* entries) noexcept;
    template <unsigned indexBits>
    PIXKIT_WITH_BMI2 [[gnu::noinline]] Step decodeFaster(const Entry* entries) noexcept; // by up to a tenth
    Step decodeSymbol() noexcept;
    template <typename Table>
    Step decodeEntry(const Table& table, Entry& entry) noexcept;

    std::size_t written() const noexcept { return m_gone + static_cast<std::size_t>(m_out - m_room.begin); }
    std::size_t room() const noexcept { return static_cast<std::size_t>(m_room.end - m_out); }
    bool isFull() const noexcept { return m_out == m_room.end; } // with provided room: there is no more

    Pieces* m_pieces = nullptr;
    bool m_isMoreInput = false;
    std::span<const std::uint8_t> m_piece; // the last one
    std::size_t m_used = 0;                // how much of it the reader has, or had, in the seam or where it lies
    BitReader m_reader;
    Room m_room;
    std::uint8_t* m_out;
    std::size_t m_gone = 0;       // bytes of output before m_room.begin
    bool m_codesAreFixed = false; // the tables hold the fixed codes
    bool m_areJoined = false;     // m_joined is used instead of m_literals, but for long codes
    LiteralTable m_literals;
    Entry m_joined[std::size_t{1} << widestJoinedBits];
    DistanceTable m_distances;
    // What is left of a piece, and behind it the beginning of those that follow.
    std::uint8_t m_seam[1024];
    static_assert(sizeof m_seam >= longestHead + sizeof(BitReader::Word));
};

// Goes on where the seam has come from as soon as all that is left there lies in one piece; else makes a seam.
void Inflater::joinPieces(std::size_t needed) noexcept {
    while (m_isMoreInput && m_reader.bytesLeft() < needed) {
        const std::size_t left = m_reader.bytesLeft(), held = m_reader.bytesHeld();
        if (m_used < m_piece.size() && m_used >= left + held) {
            m_reader.continueAt(m_piece.data() + m_used - left, m_piece.data() + m_piece.size());
            m_used = m_piece.size();
            continue;
        }
        std::size_t size = held + left;
        if (size != 0) std::memmove(m_seam, m_reader.bytes() - held, size);
        while (size < sizeof m_seam) {
            if (m_used == m_piece.size()) {
                m_piece = m_pieces->moreInput();
                m_used = 0;
                m_isMoreInput = !m_piece.empty();
                if (!m_isMoreInput) break;
            }
            const std::size_t bytes = std::min(m_piece.size() - m_used, sizeof m_seam - size);
            std::memcpy(m_seam + size, m_piece.data() + m_used, bytes);
            m_used += bytes;
            size += bytes;
        }
        m_reader.continueAt(m_seam + held, m_seam + size);
    }
}

void Inflater::provideRoom(std::size_t needed) noexcept {
    if (m_room.isLast || room() >= needed) return;
    const std::size_t before = written();
    m_room = m_pieces->moreRoom(m_out);
    m_out = m_room.next;
    m_gone = before - static_cast<std::size_t>(m_out - m_room.begin);
}

// The header is checked as zlib checks it, but the window that it declares is not held against the stream: distances
// may go further back.
Result Inflater::runZlib() noexcept {
    provideInput(2);
    if (m_reader.bytesLeft() < 2) return {Outcome::inputEnded, 0};
    const unsigned first = m_reader.bytes()[0], flags = m_reader.bytes()[1];
    const unsigned method = first & 15u, window = first >> 4;
    const bool hasDictionary = (flags & 0x20) != 0;
    if ((first * 256u + flags) % 31 != 0 || method != 8 || window > 7 || hasDictionary) return {Outcome::damaged, 0};
    m_reader.skipBytes(2);
    return run();
}

Result Inflater::run() noexcept {
    Step step = Step::goOn;
    for (bool isLast = false; !isLast;) {
        step = block(isLast);
        if (step != Step::blockEnded) break;
    }
    const std::size_t bytes = written();
    if (step == Step::blockEnded) return {Outcome::complete, bytes};
    // Full output is full output: nothing that stands behind the last byte that fits can spoil it.
    if (m_room.isLast && isFull()) return {Outcome::outputFull, bytes};
    return {step == Step::inputEnded ? Outcome::inputEnded : Outcome::damaged, bytes};
}

Step Inflater::block(bool& isLast) noexcept {
    unsigned header;
    provideInput(longestHead);
    if (!m_reader.take(3, header)) return Step::inputEnded;
    isLast = (header & 1) != 0;
    const unsigned type = header >> 1;
    if (type == 0) return storedBlock();
    if (type == 3) return Step::damaged;
    const Step step = type == 1 ? useFixedCodes() : readCodes();
    return step == Step::goOn ? compressedBlock() : step;
}

Step Inflater::storedBlock() noexcept {
    m_reader.alignToByte();
    if (m_reader.bytesLeft() < 4) return Step::inputEnded;
    const unsigned length = loadWord<std::uint16_t>(m_reader.bytes());
    const unsigned complement = loadWord<std::uint16_t>(m_reader.bytes() + 2);
    if ((length ^ complement) != 0xffff) return Step::damaged;
    m_reader.skipBytes(4);

    for (std::size_t left = length; left != 0;) {
        provideInput(1);
        provideRoom(1);
        const std::size_t bytes = std::min({left, m_reader.bytesLeft(), room()});
        if (bytes == 0) return isFull() ? Step::outputFull : Step::inputEnded;
        std::memcpy(m_out, m_reader.bytes(), bytes);
        m_out += bytes;
        m_reader.skipBytes(bytes);
        left -= bytes;
    }
    return Step::blockEnded;
}

Step Inflater::useFixedCodes() noexcept {
    if (m_codesAreFixed) return Step::goOn;
    m_codesAreFixed = true;
    m_areJoined = false;
    build(m_literals, fixedLiteralLengths.data(), literalCodes);
    build(m_distances, fixedDistanceLengths.data(), distanceCodes);
    return Step::goOn;
}

// The head of a block with codes of its own (RFC 1951, 3.2.7).
Step Inflater::readCodes() noexcept {
    m_codesAreFixed = false;
    unsigned counts;
    if (!m_reader.take(14, counts)) return Step::inputEnded;
    const unsigned literalCount = (counts & 31) + 257, distanceCount = (counts >> 5 & 31) + 1;
    const unsigned codeLengthCount = (counts >> 10) + 4;
    if (literalCount > literalSymbols || distanceCount > distanceSymbols) return Step::damaged;

    std::uint8_t codeLengthLengths[codeLengthSymbols] = {};
    for (unsigned i = 0; i < codeLengthCount; ++i) {
        unsigned length;
        if (!m_reader.take(3, length)) return Step::inputEnded;
        codeLengthLengths[codeLengthOrder[i]] = static_cast<std::uint8_t>(length);
    }
    CodeLengthTable codeLengths;
    if (!build(codeLengths, codeLengthLengths)) return Step::damaged;

    std::uint8_t lengths[literalSymbols + distanceSymbols] = {};
    const Step step = readCodeLengths(codeLengths, lengths, literalCount + distanceCount);
    if (step != Step::goOn) return step;
    if (lengths[endOfBlock] == 0) return Step::damaged; // the block could not end
    if (!build(m_literals, lengths, literalCount)) return Step::damaged;
    if (!build(m_distances, lengths + literalCount, distanceCount)) return Step::damaged;
    m_areJoined = m_isMoreInput || m_reader.bytesLeft() >= joiningPays();
    if (m_areJoined) joinEntries(m_joined, m_literals);
    return Step::goOn;
}

// The lengths have to be 0 before.
Step Inflater::readCodeLengths(const CodeLengthTable& table, std::uint8_t* lengths, unsigned count) noexcept {
    BitReader reader = m_reader; // lengths that are stored could change the member for all the compiler knows
    for (unsigned have = 0; have < count;) {
        if (reader.count() < longestLengthCode) reader.refill();
        const Entry entry = table.entries[reader.peek() & CodeLengthTable::mask];
        if (reader.count() < dropBits(entry)) return Step::inputEnded;
        const unsigned symbol = baseOf(entry);
        if (symbol < repeatLast) {
            lengths[have++] = static_cast<std::uint8_t>(symbol);
            reader.drop(entry);
            continue;
        }
        const unsigned repeat = fewestRepeats(symbol) + static_cast<unsigned>(takeExtra(reader, entry));
        if (symbol == repeatLast && have == 0) return Step::damaged;
        if (repeat > count - have) return Step::damaged;
        if (symbol == repeatLast) std::fill_n(lengths + have, repeat, lengths[have - 1]);
        have += repeat;
    }
    m_reader = reader;
    return Step::goOn;
}

Step Inflater::compressedBlock() noexcept {
    const bool hasBmi2 = (kernels::features() & kernels::cpuAvx2) != 0; // which came with it
    const bool isWide = m_areJoined && m_literals.joinedBits == widestJoinedBits;
    const Entry* const entries = m_areJoined ? m_joined : m_literals.entries;
    const auto decodeFar = [&]() {
        if (isWide) return hasBmi2 ? decodeFaster<widestJoinedBits>(entries) : decodeFast<widestJoinedBits>(entries);
        return hasBmi2 ? decodeFaster<literalTableBits>(entries) : decodeFast<literalTableBits>(entries);
    };
    while (true) {
        provideInput(inputMargin);
        provideRoom(outputMargin);
        const bool isFar = m_reader.bytesLeft() >= inputMargin && room() >= outputMargin;
        const Step step = isFar ? decodeFar() : decodeSymbol();
        if (step != Step::goOn) return step;
    }
}

// Decodes while a round can neither run out of data nor out of room, which is so for the first one; goOn means that the
// margins are used up.
template <unsigned indexBits>
Step Inflater::decodeRounds(const Entry* const entries) noexcept {
    // Copies, because a byte stored through `out` could change the members for all the compiler knows.
    BitReader reader = m_reader;
    std::uint8_t* out = m_out;
    const std::uint8_t* const begin = m_room.begin;
    const std::uint8_t* const lastStart = m_room.end - outputMargin;
    std::size_t mask = (std::size_t{1} << indexBits) - 1;
    // Where look-ups are what the loop waits for, the mask stays in a register: processors that do not rename moves
    // would wait for the one that goes before an operation with a constant, too.
    if constexpr (indexBits == widestJoinedBits && !narrow) asm("" : "+r"(mask));

    // Wherever enough bits are left, a look-up comes before the refill: it need not wait for it.
    reader.refillFast();
    Entry entry = entries[reader.peek() & mask];
    do {
        unsigned literals = literalsPerRound;
        for (; literals != 0 && isLiteral(entry); --literals) {
            putLiterals(out, entry);
            reader.drop(entry);
            entry = entries[reader.peek() & mask];
        }
        if (literals == 0) {
            reader.refillFast();
            continue;
        }
        if (isSpecial(entry)) [[unlikely]] {
            if (isLink(entry)) entry = follow(m_literals, entry, reader);
            if (isLiteral(entry)) {
                putLiterals(out, entry);
                reader.drop(entry);
                reader.refillFast();
                entry = entries[reader.peek() & mask];
                continue;
            }
            if (isSpecial(entry)) {
                reader.drop(entry);
                m_reader = reader;
                m_out = out;
                return (entry & specialKind) == endOfBlockEntry ? Step::blockEnded : Step::damaged;
            }
        }
        putLiterals(out, entry);
        const std::size_t length = lengthOf(entry) + takeExtra(reader, entry);
        std::size_t distance;
        if (!takeDistance(m_distances, reader, distance) || distance > static_cast<std::size_t>(out - begin)) {
            m_out = out;
            return Step::damaged;
        }

        if constexpr (narrow) reader.refillFast();
        entry = entries[reader.peek() & mask];
        if constexpr (!narrow) reader.refillFast();
        copyWide(out, distance, length);
        out += length;
    } while (reader.bytesLeft() >= inputMargin && out <= lastStart);

    m_reader = reader;
    m_out = out;
    return Step::goOn;
}

template <unsigned indexBits>
Step Inflater::decodeFast(const Entry* entries) noexcept {
    return decodeRounds<indexBits>(entries);
}

template <unsigned indexBits>
Step Inflater::decodeFaster(const Entry* entries) noexcept {
    return decodeRounds<indexBits>(entries);
}

// Finds the entry of the next code; goOn when the code is there as a whole. Drops the code, not its extra bits.
template <typename Table>
Step Inflater::decodeEntry(const Table& table, Entry& entry) noexcept {
    m_reader.refill();
    entry = table.entries[m_reader.peek() & Table::mask];
    if (isLink(entry)) {
        if (m_reader.count() < dropBits(entry)) return Step::inputEnded;
        entry = follow(table, entry, m_reader);
    }
    if (m_reader.count() < codeBits(entry)) return Step::inputEnded;
    m_reader.drop(codeBits(entry));
    return Step::goOn;
}

// One literal or match, with every check: for the ends of the data and of the output.
Step Inflater::decodeSymbol() noexcept {
    Entry entry;
    Step step = decodeEntry(m_literals, entry);
    if (step != Step::goOn) return step;
    if (isSpecial(entry)) return (entry & specialKind) == endOfBlockEntry ? Step::blockEnded : Step::damaged;
    if (isLiteral(entry)) {
        if (isFull()) return Step::outputFull;
        *m_out++ = static_cast<std::uint8_t>(entry >> 16);
        return Step::goOn;
    }
    unsigned extra;
    if (!m_reader.take(dropBits(entry) - codeBits(entry), extra)) return Step::inputEnded;
    const std::size_t length = lengthOf(entry) + extra;

    step = decodeEntry(m_distances, entry);
    if (step != Step::goOn) return step;
    if (isSpecial(entry)) return Step::damaged;
    if (!m_reader.take(dropBits(entry) - codeBits(entry), extra)) return Step::inputEnded;
    const std::size_t distance = baseOf(entry) + extra;
    if (distance > written()) return Step::damaged;

    const std::size_t bytes = std::min(length, room());
    if (room() >= length + copyOverrun)
        copyWide(m_out, distance, bytes);
    else
        copyBytes(m_out, distance, bytes);
    m_out += bytes;
    return bytes == length ? Step::goOn : Step::outputFull;
}

} // namespace

Result inflate(std::uint8_t* output, std::size_t capacity, const std::uint8_t* input, std::size_t bytes) noexcept {
    Inflater inflater(output, capacity, input, bytes);
    return inflater.run();
}

Result inflateZlib(std::uint8_t* output, std::size_t capacity, const std::uint8_t* input, std::size_t bytes) noexcept {
    Inflater inflater(output, capacity, input, bytes);
    return inflater.runZlib();
}

Result inflatePieces(Pieces& pieces) noexcept {
    Inflater inflater(pieces);
    return inflater.runZlib();
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
