var b = new Uint8Array([0, 255, 128]); var t = new TokenProvider(); try { t.Load(b.buffer); } catch (e) {} try { t.OpenKey(b); } catch (e) {}
