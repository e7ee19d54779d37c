// The decoder of Base64 texts against Qt's, which takes a text as a whole.
#include "ink/base64text.h"

#include <algorithm>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

// Mostly of the alphabet; the others are left out wherever they stand.
QByteArray randomText(std::mt19937& random)
{
    static const std::string characters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/-_= \n\r!\xff\x80";
    const bool onlyDigits = random() % 2 == 0;
    QByteArray text;
    for (std::size_t left = random() % 100; left > 0; --left)
        text += characters[random() % (onlyDigits ? 64 : characters.size())];
    return text;
}

TEST(Base64Text, DecodesAsAWhole)
{
    std::mt19937 random(4);
    for (int i = 0; i < 20000; ++i) {
        const QByteArray text = randomText(random);
        ASSERT_EQ(DecodeBase64(text.constData(), text.size()), QByteArray::fromBase64(text))
            << text.toStdString();
    }
}

TEST(Base64Text, PiecesMayEndAnywhere)
{
    std::mt19937 random(5);
    for (int i = 0; i < 20000; ++i) {
        const QByteArray text = randomText(random);
        CBase64Decoder decoder;
        std::string decoded;
        for (int at = 0; at < text.size();) {
            const int piece = std::min(static_cast<int>(text.size()) - at, static_cast<int>(random() % 9));
            std::string bytes(CBase64Decoder::Room(static_cast<std::size_t>(piece)), '\0');
            bytes.resize(
                decoder.Decode(text.constData() + at, static_cast<std::size_t>(piece), bytes.data()));
            decoded += bytes;
            at += piece;
        }
        ASSERT_EQ(decoded, QByteArray::fromBase64(text).toStdString()) << text.toStdString();
    }
}

} // namespace
