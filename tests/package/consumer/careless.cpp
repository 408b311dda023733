// What a strict set of warnings objects to, and a program that embeds the library may well contain.
int shadowed_and_narrowed(double value) {
  int result = (int)value;
  {
    int result = 0;
    result += value > 0;
  }
  return static_cast<char>(result) + sizeof(value);
}
