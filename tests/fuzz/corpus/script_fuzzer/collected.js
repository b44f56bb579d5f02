var a = new TokenProvider(), l = a.Load; try { l.call({}, "x"); } catch (e) { print(e); } try { l.call(a, a); } catch (e) { print(e); } a = null; Duktape.gc();
