// A program that is linked with Qt and does nothing.

int main() {
  return 0;
}
