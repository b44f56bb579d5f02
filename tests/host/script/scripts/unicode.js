// Text of every length in UTF-8, and half a surrogate pair.
print("Grüße, Ключ, 鍵, 🔑");
print("🔑".length);
print("half: " + "🔑".charAt(0));
