import QtQuick

// Measures texts. What is bound to a width follows the font.
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
