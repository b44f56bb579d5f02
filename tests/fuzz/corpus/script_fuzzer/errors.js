try { new TokenProvider().Load({}, [1], null, undefined, true); } catch (e) { print(e.hresult, e.message, e.stack); }
