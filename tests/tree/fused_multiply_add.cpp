/// What a compiler that may fuse turns into one instruction. It proves that the check would see it.
float multiplyAdd(float a, float b, float c);

float multiplyAdd(float a, float b, float c) {
    return a * b + c;
}
