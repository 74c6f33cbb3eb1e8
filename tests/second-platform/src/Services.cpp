// Small services: the environment, unique identifiers, file names, vectors and matrices, running
// out of memory. Their headers are the contract's own.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "KORMath.h"
#include "KORMemory.h"
#include "KORNameConversion.h"
#include "KORSystem.h"

// ---- The environment, unique identifiers

const char* KORGetEnv(const char* name) { return name != nullptr ? std::getenv(name) : nullptr; }

KORUuid::KORUuid() {
    std::random_device random;
    for (unsigned char& byte : bytes_) byte = static_cast<unsigned char>(random());
    bytes_[6] = static_cast<unsigned char>(0x40 | (bytes_[6] & 0x0F));  // version 4
    bytes_[8] = static_cast<unsigned char>(0x80 | (bytes_[8] & 0x3F));  // variant of RFC 4122
}

void KORUuid::UUID_to_chaine(char* buffer) const {
    std::string text;
    for (const unsigned char byte : bytes_) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
        if (text.size() == 8 || text.size() == 13 || text.size() == 18 || text.size() == 23) {
            text += '-';
        }
    }
    text.copy(buffer, text.size());
    buffer[text.size()] = '\0';
}

// ---- File names

void cmbflmd(const char* name, char* fileName, int* status) {
    std::string converted(name);
    for (std::size_t at; (at = converted.find(' ')) != std::string::npos;) converted[at] = '\xB1';
    std::snprintf(fileName, converted.size() + 1, "%s", converted.c_str());
    *status = 0;
}

void cmbrcmd(const char* fileName, char* name) {
    std::string converted(fileName);
    for (std::size_t at; (at = converted.find('\xB1')) != std::string::npos;) converted[at] = ' ';
    std::snprintf(name, converted.size() + 1, "%s", converted.c_str());
}

// ---- Vectors and matrices

double KORMathVector::Norm() const { return std::hypot(values_[0], values_[1], values_[2]); }

// The rows of the inverse are the cross products of the columns, divided by the determinant.
KORMath3x3Matrix KORMath3x3Matrix::Inverse() const {
    const double determinant = Dot(columns_[0], Cross(columns_[1], columns_[2]));
    KORMathVector rows[3];
    for (unsigned i = 0; i < 3; ++i) {
        rows[i] = Cross(columns_[(i + 1) % 3], columns_[(i + 2) % 3]) / determinant;
    }
    return {{rows[0][0], rows[1][0], rows[2][0]},
            {rows[0][1], rows[1][1], rows[2][1]},
            {rows[0][2], rows[1][2], rows[2][2]}};
}

KORMath3x3Matrix operator*(const KORMath3x3Matrix& left, const KORMath3x3Matrix& right) {
    const KORMathVector* from[] = {&left.GetFirstColumn(), &left.GetSecondColumn(),
                                   &left.GetThirdColumn()};
    const KORMathVector* by[] = {&right.GetFirstColumn(), &right.GetSecondColumn(),
                                 &right.GetThirdColumn()};
    double product[3][3] = {};
    for (int column = 0; column < 3; ++column) {
        for (int row = 0; row < 3; ++row) {
            // Starts from +0.0, so that no component is -0.0.
            for (int k = 0; k < 3; ++k) product[column][row] += (*from[k])[row] * (*by[column])[k];
        }
    }
    const auto column = [&product](int i) {
        return KORMathVector(product[i][0], product[i][1], product[i][2]);
    };
    return {column(0), column(1), column(2)};
}

// ---- Running out of memory

static thread_local bool exhausted = false;

void KORMemory::NoteExhausted() noexcept { exhausted = true; }

bool KORMemory::TakeExhausted() noexcept {
    const bool was = exhausted;
    exhausted = false;
    return was;
}
