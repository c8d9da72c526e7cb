// A program in C#: reads a command line from the standard input, runs it, and prints what came of it.

using System;
using System.Runtime.InteropServices;
using System.Text;

/// The few functions of the interface that a program with commands needs. Texts are UTF-8 that ends with a zero byte.
static class LumoScad {
  const string Library = "liblumoscad.so.1";
  public const int Testo = 1;
  public const int Messaggio = 2;

  [DllImport(Library)] public static extern int lumoscad_apri(out IntPtr handle);
  [DllImport(Library)] public static extern void lumoscad_chiudi(IntPtr handle);
  [DllImport(Library)] public static extern int lumoscad_esegui_riga(IntPtr handle, byte[] line, out IntPtr outcome);
  [DllImport(Library)] public static extern IntPtr lumoscad_campo(IntPtr outcome, int field, out UIntPtr length);
  [DllImport(Library)] public static extern IntPtr lumoscad_errore_testo(IntPtr handle);
  [DllImport(Library)] public static extern void lumoscad_libera(IntPtr outcome);

  public static byte[] ToUtf8(string text) {
    return Encoding.UTF8.GetBytes(text + '\0');
  }

  public static string Field(IntPtr outcome, int field) {
    UIntPtr length;
    IntPtr text = lumoscad_campo(outcome, field, out length);
    var bytes = new byte[(int)length];
    Marshal.Copy(text, bytes, 0, bytes.Length);
    return Encoding.UTF8.GetString(bytes);
  }
}

static class Crediti {
  static int Main() {
    string line = Console.ReadLine();
    if (line == null) {
      return 2;
    }
    IntPtr handle;
    int number = LumoScad.lumoscad_apri(out handle);
    if (number != 0) {
      return number;
    }
    IntPtr outcome;
    number = LumoScad.lumoscad_esegui_riga(handle, LumoScad.ToUtf8(line), out outcome);
    Console.WriteLine("{0} \"{1}\" \"{2}\"", number, LumoScad.Field(outcome, LumoScad.Testo),
                      LumoScad.Field(outcome, LumoScad.Messaggio));
    LumoScad.lumoscad_libera(outcome);
    LumoScad.lumoscad_chiudi(handle);
    return number;
  }
}
