// The protocol between driver and pad, without a socket.
#include "support.h"

#include <random>

using namespace simulator::padlink;
using Peer = Parser::Peer;

namespace {

std::vector<Message> driverMessages()
{
    Picture picture{104, 144, {}};
    for (int index = 0; index < 104 * 144 * 2; ++index)
        picture.pixels.push_back(static_cast<unsigned char>(index * 31));
    return {Hello{ProtocolVersion, 7},
            Screen{true},
            Screen{false},
            Clear{},
            VersionInfo{true, "SCK421B\nline 2"},
            VersionInfo{false, ""},
            PenStyle{false},
            PenStyle{true},
            picture,
            Picture{1, 1, {0xf8, 0x00}},
            Picture{LargestPictureSide, LargestPictureSide,
                    std::vector<unsigned char>(LargestPayload - 4, 0x5a)}};
}

std::vector<Message> padMessages()
{
    Samples many;
    for (int index = 0; index < static_cast<int>(MostSamples); ++index)
        many.samples.push_back({index, -index, index * 1000, index % 5});
    return {Welcome{ProtocolVersion, "SCT480R1"}, many, Samples{{{INT32_MIN, INT32_MAX, -1, 77}}},
            FingerprintScan{-3, std::vector<unsigned char>(simulator::FingerprintSize, 9)},
            Refusal{"reason"}};
}

std::string bytesOf(const std::vector<Message>& messages)
{
    std::string bytes;
    for (const Message& message : messages)
        bytes += encode(message);
    return bytes;
}

struct Taken
{
    std::vector<Message> messages;
    bool accepted = true;
    std::string error;
};

// In pieces of that many bytes.
Taken take(Peer peer, std::string_view bytes, std::size_t piece)
{
    Taken taken;
    Parser parser(peer);
    while (!bytes.empty() && taken.accepted) {
        taken.accepted = parser.take(bytes.substr(0, piece), [&](Message&& message) {
            taken.messages.push_back(std::move(message));
            return true;
        });
        bytes.remove_prefix(std::min(piece, bytes.size()));
    }
    taken.error = parser.error();
    return taken;
}

// A frame by hand.
std::string frame(int type, std::size_t length, const std::string& payload)
{
    std::string bytes(1, static_cast<char>(type));
    for (int index = 0; index < 3; ++index)
        bytes += static_cast<char>(length >> (8 * index) & 0xff);
    return bytes + payload;
}

std::string frame(int type, const std::string& payload)
{
    return frame(type, payload.size(), payload);
}

const std::string HelloBytes = encode(Hello{ProtocolVersion, 2});
const std::string WelcomeBytes = encode(Welcome{ProtocolVersion, "SCK210"});

void expectRefused(Peer peer, const std::string& bytes, const std::string& reason)
{
    for (const std::size_t piece : {std::size_t{1}, bytes.size()}) {
        const Taken taken = take(peer, bytes, piece);
        EXPECT_FALSE(taken.accepted) << reason;
        EXPECT_NE(taken.error.find(reason), std::string::npos) << "'" << taken.error << "' for " << reason;
    }
}

} // namespace

TEST(PadLink, EveryMessageArrivesAsItWasSentInPiecesOfAnySize)
{
    for (const std::size_t piece :
         {std::size_t{1}, std::size_t{3}, std::size_t{1000}, std::size_t{4'000'000}}) {
        const Taken fromDriver = take(Peer::Driver, bytesOf(driverMessages()), piece);
        EXPECT_TRUE(fromDriver.accepted) << fromDriver.error;
        EXPECT_TRUE(fromDriver.messages == driverMessages()) << "pieces of " << piece;
        std::vector<Message> messages = padMessages();
        messages.pop_back(); // a refusal introduces and so comes first
        const Taken fromPad = take(Peer::Pad, bytesOf(messages), piece);
        EXPECT_TRUE(fromPad.accepted) << fromPad.error;
        EXPECT_TRUE(fromPad.messages == messages) << "pieces of " << piece;
    }
    const std::vector<Message> refusal{padMessages().back()};
    EXPECT_TRUE(take(Peer::Pad, bytesOf(refusal), 1).messages == refusal);
}

TEST(PadLink, TheBytesAreThoseOfTheDocument)
{
    EXPECT_EQ(HelloBytes, std::string("\x01\x10\x00\x00SCRIBERA\x01\x00\x00\x00\x02\x00\x00\x00", 20));
    EXPECT_EQ(encode(Screen{true}), std::string("\x02\x01\x00\x00\x01", 5));
    EXPECT_EQ(
        encode(Samples{{{1, -2, 258, 4}}}),
        std::string("\x43\x10\x00\x00\x01\x00\x00\x00\xfe\xff\xff\xff\x02\x01\x00\x00\x04\x00\x00\x00", 20));
    EXPECT_EQ(encode(Picture{2, 1, {1, 2, 3, 4}}),
              std::string("\x06\x08\x00\x00\x02\x00\x01\x00\x01\x02\x03\x04", 12));
}

TEST(PadLink, HalfAMessageIsNoMessage)
{
    for (const Message& message : driverMessages()) {
        if (std::holds_alternative<Hello>(message))
            continue;
        const std::string bytes = encode(message);
        for (std::size_t count = 0; count < std::min<std::size_t>(bytes.size(), 2000); ++count) {
            const Taken taken = take(Peer::Driver, HelloBytes + bytes.substr(0, count), 1 << 20);
            ASSERT_TRUE(taken.accepted) << taken.error;
            ASSERT_EQ(taken.messages.size(), 1U) << count;
        }
    }
}

TEST(PadLink, TheFirstMessageIsTheIntroductionAndTheOnlyOne)
{
    expectRefused(Peer::Driver, encode(Clear{}), "no introduction");
    expectRefused(Peer::Pad, encode(Samples{{{1, 2, 3, 0}}}), "no introduction");
    expectRefused(Peer::Driver, HelloBytes + HelloBytes, "second introduction");
    expectRefused(Peer::Pad, WelcomeBytes + encode(Refusal{""}), "second introduction");
}

TEST(PadLink, AnIntroductionOfAnotherProtocolIsRefused)
{
    std::string bytes = HelloBytes;
    bytes[6] = 'x';
    expectRefused(Peer::Driver, bytes, "not this protocol");
    bytes = WelcomeBytes;
    bytes[4] = 0;
    expectRefused(Peer::Pad, bytes, "not this protocol");
}

TEST(PadLink, NobodySaysWhatIsTheOthersToSay)
{
    expectRefused(Peer::Driver, WelcomeBytes, "unknown message type 65");
    expectRefused(Peer::Pad, HelloBytes, "unknown message type 1");
    expectRefused(Peer::Driver, HelloBytes + encode(Samples{{{1, 2, 3, 0}}}), "unknown message type 67");
    expectRefused(Peer::Driver, "GET / HTTP/1.1\r\n\r\n", "unknown message type 71");
    expectRefused(Peer::Pad, frame(0, ""), "unknown message type 0");
}

TEST(PadLink, LengthsBeyondTheLimitsAreRefusedBeforeTheBytesCome)
{
    const auto refusedLength = [](Peer peer, const std::string& introduction, int type, std::size_t length) {
        expectRefused(peer, introduction + frame(type, length, ""), "cannot have " + std::to_string(length));
    };
    refusedLength(Peer::Driver, "", 1, 15);
    refusedLength(Peer::Driver, "", 1, 17);
    refusedLength(Peer::Driver, HelloBytes, 2, 0);
    refusedLength(Peer::Driver, HelloBytes, 2, 2);
    refusedLength(Peer::Driver, HelloBytes, 3, 1);
    refusedLength(Peer::Driver, HelloBytes, 4, 0);
    refusedLength(Peer::Driver, HelloBytes, 4, LongestText + 2);
    refusedLength(Peer::Driver, HelloBytes, 6, 5);
    refusedLength(Peer::Driver, HelloBytes, 6, LargestPayload + 1);
    refusedLength(Peer::Driver, HelloBytes, 6, 0xffffff);
    refusedLength(Peer::Pad, "", 65, 12);
    refusedLength(Peer::Pad, "", 65, 13 + LongestModel);
    refusedLength(Peer::Pad, "", 66, LongestText + 1);
    refusedLength(Peer::Pad, WelcomeBytes, 67, 0);
    refusedLength(Peer::Pad, WelcomeBytes, 67, 16 * MostSamples + 16);
    refusedLength(Peer::Pad, WelcomeBytes, 68, 4 + simulator::FingerprintSize - 1);
}

TEST(PadLink, ContentsThatMakeNoSenseAreRefused)
{
    expectRefused(Peer::Driver, HelloBytes + frame(2, "\x02"), "neither on nor off");
    expectRefused(Peer::Driver, HelloBytes + frame(5, "\xff"), "neither on nor off");
    expectRefused(Peer::Driver,
                  HelloBytes + frame(4, "\x01"
                                        "a\x1b[2J"),
                  "not printable");
    expectRefused(Peer::Driver, HelloBytes + frame(4, "\x01\xc3\xa4"), "not printable");
    expectRefused(Peer::Driver, HelloBytes + frame(6, std::string("\x02\x00\x02\x00 123", 8)), "picture");
    expectRefused(Peer::Driver, HelloBytes + frame(6, std::string("\x00\x00\x00\x00 123", 8)), "picture");
    expectRefused(Peer::Driver,
                  HelloBytes + frame(6, std::string("\x01\x02\x01\x00", 4) + std::string(1026, 'x')),
                  "picture");
    expectRefused(Peer::Pad, WelcomeBytes + frame(67, std::string(17, '\0')), "multiple of 16");
    expectRefused(Peer::Pad, frame(65, std::string("SCRIBERA\x01\x00\x00\x00SCK\n210", 19)), "not printable");
    expectRefused(Peer::Pad, frame(66, "\x7f"), "not printable");
}

TEST(PadLink, NothingIsTakenBehindARefusalOrWhenTheReceiverEndedIt)
{
    Parser parser(Peer::Driver);
    int count = 0;
    const auto once = [&](Message&&) { return ++count < 2; };
    EXPECT_FALSE(parser.take(HelloBytes + encode(Clear{}) + encode(Clear{}), once));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(parser.error(), "");
    EXPECT_FALSE(parser.take(encode(Clear{}), once));
    EXPECT_EQ(count, 2);

    Parser refusing(Peer::Driver);
    EXPECT_FALSE(refusing.take("\xff\xff\xff\xff", once));
    EXPECT_FALSE(refusing.take(HelloBytes, once));
    EXPECT_EQ(count, 2);
}

TEST(PadLink, TextsAreMadeToKeepTheLimits)
{
    const std::string odd = "ä\x01" + std::string(1000, 'x');
    const Taken taken = take(Peer::Driver, HelloBytes + encode(VersionInfo{true, odd}), 7);
    ASSERT_TRUE(taken.accepted) << taken.error;
    EXPECT_EQ(std::get<VersionInfo>(taken.messages.at(1)).text, "???" + std::string(LongestText - 3, 'x'));
    EXPECT_TRUE(take(Peer::Pad, encode(Welcome{ProtocolVersion, std::string(1000, 'x')}), 7).accepted);
}

TEST(PadLink, DamagedMessagesNeverDoHarm)
{
    std::mt19937 random(20240501);
    const std::string good[] = {bytesOf(driverMessages()).substr(0, 40000), bytesOf(padMessages())};
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        const Peer peer = round % 2 == 0 ? Peer::Driver : Peer::Pad;
        std::string bytes = good[round % 2];
        for (int damage = 0; damage < 4; ++damage) {
            const std::size_t position = random() % (damage < 2 ? 200 : bytes.size());
            bytes[position] = static_cast<char>(random());
        }
        bytes.resize(random() % bytes.size());
        const Taken whole = take(peer, bytes, bytes.size() + 1);
        const Taken pieces = take(peer, bytes, 1 + random() % 97);
        ASSERT_TRUE(whole.messages == pieces.messages) << "round " << round;
        ASSERT_EQ(whole.error, pieces.error) << "round " << round;
        ASSERT_EQ(whole.accepted, whole.error.empty());
        refused += whole.accepted ? 0 : 1;
    }
    EXPECT_GT(refused, 500) << "the damage does none";
}

TEST(PadSocket, TheDefaultPathIsBelowTheRuntimeFolderOrInOneOfTheUsersOwn)
{
    std::string error;
    for (const char* setting : {"", "1", "default"}) {
        std::string path;
        setenv("XDG_RUNTIME_DIR", "/run/user/12345", 1);
        ASSERT_TRUE(simulator::padSocketPath(setting, path, error)) << error;
        EXPECT_EQ(path, "/run/user/12345/scribera-virtual-pad");
    }
    unsetenv("XDG_RUNTIME_DIR");
    std::string path;
    ASSERT_TRUE(simulator::padSocketPath("1", path, error)) << error;
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    EXPECT_EQ(folder.string(), "/tmp/scribera-" + std::to_string(geteuid()));
    EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms::owner_all);

    ASSERT_TRUE(simulator::padSocketPath("own/place", path, error));
    EXPECT_EQ(path, "own/place");
    EXPECT_FALSE(simulator::padSocketPath("/" + std::string(107, 'x'), path, error));
    EXPECT_NE(error.find("longer than"), std::string::npos) << error;
}
