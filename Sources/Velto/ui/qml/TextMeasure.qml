import QtQuick

// Measures texts. Bindings that call its functions are re-evaluated when the font changes.
FontMetrics {
    id: measure

    function widthOf(text: string): real {
        return font.family === "" ? 0 : Math.ceil(advanceWidth(text));
    }

    function widestOf(texts: var): real {
        let widest = 0;
        for (const text of texts)
            widest = Math.max(widest, widthOf(text));
        return widest;
    }
}
